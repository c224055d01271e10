#include "gallery/thumbnail_loader.h"

#include "nimbit/graphics/jpeg_encoder.h"
#include "nimbit/graphics/png_encoder.h"
#include "nimbit/utils/mapped_cache.h"
#include "tests/foundation/temp_folder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

using namespace nimbit;
using nimbit::graphics::rgba_image;

namespace {

enum class Format { Png, Jpg };

// A capture whose left half is red and right half blue, so that a thumbnail's colours can be checked.
std::vector<unsigned char> Encoded(Format format, int width, int height) {
    std::vector<unsigned char> pixels(size_t(width) * size_t(height) * 4);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            unsigned char* p = &pixels[(size_t(y) * size_t(width) + size_t(x)) * 4];
            const bool left = x < width / 2;
            p[0] = left ? 220 : 10, p[1] = 20, p[2] = left ? 10 : 230, p[3] = 255;
        }
    const graphics::rgba_view view{pixels.data(), width, height, size_t(width) * 4};
    return format == Format::Png ? graphics::encode_png(view) : graphics::encode_jpg(view);
}

class ThumbnailLoaderTest : public ::testing::Test {
protected:
    temp_folder tmp;
    file_path cacheFile = tmp / "effects_cache";

    file_path Capture(const char* name, Format format, int width, int height) {
        const file_path path = tmp / name;
        EXPECT_TRUE(write_bytes(path, Encoded(format, width, height)));
        return path;
    }
    // Everything the loader delivers for wanted, in the order it finished.
    static std::vector<GalleryLoadedImage> LoadAll(ThumbnailLoader& loader,
                                                   std::vector<GalleryImageRequest> wanted) {
        loader.Request(std::move(wanted));
        loader.Wait();
        return loader.TakeReady();
    }
    static std::vector<std::string> Leaves(const std::vector<GalleryLoadedImage>& done) {
        std::vector<std::string> out;
        for (const auto& d : done)
            out.push_back(d.path.leaf(true));
        return out;
    }
};

TEST_F(ThumbnailLoaderTest, ThumbnailsAre512WideWithTruncatedHeightAndKeepTheirColours) {
    // clang-format off
    const struct { Format format; int width, height; _vec2<int> thumbnail; } cases[] = {
        {Format::Png, 3840, 2160, {512, 288}},
        {Format::Png, 1000,  333, {512, 170}},
        {Format::Jpg, 3840, 2160, {512, 288}},
        {Format::Jpg, 1000,  333, {512, 170}}, // decoded reduced to 625x209, height still from the full size
        {Format::Jpg,  300,  200, {512, 341}}, // narrower than a thumbnail: scaled up
        {Format::Png, 4000,    3, {512,   1}}, // a strip keeps one row
    };
    // clang-format on
    ThumbnailLoader loader(cacheFile, 2);
    for (const auto& c : cases) {
        const file_path path = Capture("capture", c.format, c.width, c.height);
        const rgba_image plain = ThumbnailLoader::MakeThumbnail(path);
        const auto done = LoadAll(loader, {{path, c.width, GalleryImageKind::Thumbnail}});
        ASSERT_EQ(done.size(), 1u);
        for (const rgba_image* image : {&plain, &done[0].image}) {
            SCOPED_TRACE(testing::Message()
                         << c.width << "x" << c.height << (c.format == Format::Png ? " png" : " jpg"));
            ASSERT_EQ(image->size, c.thumbnail);
            const unsigned char* left = &image->pixels[size_t(image->size.y / 2) * image->pitch() + 20 * 4];
            const unsigned char* right = left + 470 * 4;
            EXPECT_TRUE(left[0] > 200 && left[2] < 30 && right[0] < 30 && right[2] > 200 && left[3] == 255);
        }
    }
}

TEST_F(ThumbnailLoaderTest, TheCacheServesMatchingStampsAndRebuildsStaleOnes) {
    const file_path path = Capture("a.png", Format::Png, 1000, 500);
    rgba_image image;
    {
        ThumbnailLoader loader(cacheFile, 1);
        EXPECT_FALSE(loader.CachedThumbnail(path, 7, image));
        ASSERT_EQ(LoadAll(loader, {{path, 7}})[0].image.size, (_vec2<int>{512, 256}));
    }
    // The stored value: the stamp, little-endian, then a PNG of the thumbnail.
    {
        mapped_cache cache;
        cache.load(cacheFile, true);
        std::vector<unsigned char> value;
        ASSERT_TRUE(cache.read_data(path.to_string(), value) && value.size() > 16);
        EXPECT_EQ(std::vector<unsigned char>(value.begin(), value.begin() + 9),
                  (std::vector<unsigned char>{7, 0, 0, 0, 0, 0, 0, 0, 0x89}));
    }
    // Without the capture, a new loader still has its thumbnail for the same stamp, and only for it.
    ASSERT_TRUE(remove_file(path));
    ThumbnailLoader loader(cacheFile, 1);
    EXPECT_TRUE(loader.CachedThumbnail(path, 7, image) && image.size == (_vec2<int>{512, 256}));
    EXPECT_FALSE(loader.CachedThumbnail(path, 8, image));
    EXPECT_EQ(LoadAll(loader, {{path, 7}})[0].image.size, (_vec2<int>{512, 256}));
    // The capture changed: the new stamp gets a new thumbnail, which replaces the old one.
    Capture("a.png", Format::Jpg, 800, 800);
    EXPECT_EQ(LoadAll(loader, {{path, -8}})[0].image.size, (_vec2<int>{512, 512}));
    EXPECT_TRUE(loader.CachedThumbnail(path, -8, image) && !loader.CachedThumbnail(path, 7, image));
    loader.ClearCache();
    EXPECT_FALSE(loader.CachedThumbnail(path, -8, image));
}

TEST_F(ThumbnailLoaderTest, UnreadableCapturesComeBackEmptyAndStayUncached) {
    std::vector<unsigned char> damaged = Encoded(Format::Png, 64, 64), jpg = Encoded(Format::Jpg, 64, 64);
    damaged[damaged.size() / 2] ^= 0xFF;
    ASSERT_TRUE(write_bytes(tmp / "empty.png", {}) && write_text(tmp / "text.png", "not a picture at all") &&
                write_bytes(tmp / "cut.jpg", {jpg.begin(), jpg.begin() + long(jpg.size() / 2)}) &&
                write_bytes(tmp / "damaged.png", damaged));
    std::vector<GalleryImageRequest> wanted;
    for (const char* name : {"empty.png", "text.png", "cut.jpg", "damaged.png", "missing.png"})
        for (const auto kind : {GalleryImageKind::Thumbnail, GalleryImageKind::Full})
            wanted.push_back({tmp / name, 1, kind});
    ThumbnailLoader loader(cacheFile, 2);
    const auto done = LoadAll(loader, wanted);
    ASSERT_EQ(done.size(), wanted.size());
    rgba_image image;
    for (const auto& d : done) {
        EXPECT_TRUE(d.image.empty()) << d.path.to_string();
        EXPECT_FALSE(loader.CachedThumbnail(d.path, 1, image)) << d.path.to_string();
        EXPECT_TRUE(ThumbnailLoader::MakeThumbnail(d.path).empty());
    }
}

TEST_F(ThumbnailLoaderTest, OneWorkerDeliversInOrderFullRequestsWholeAndANewRequestDropsWorkNotStarted) {
    ThumbnailLoader loader(file_path(), 1);
    std::vector<GalleryImageRequest> wanted;
    for (const char* name : {"e", "b", "d", "a", "c"})
        wanted.push_back({Capture(name, Format::Png, 600, 400), 1});
    wanted.push_back({tmp / "b", 1, GalleryImageKind::Full});
    wanted.push_back(wanted[0]); // asked twice, made once
    const auto done = LoadAll(loader, wanted);
    EXPECT_EQ(Leaves(done), (std::vector<std::string>{"e", "b", "d", "a", "c", "b"}));
    EXPECT_TRUE(done[5].kind == GalleryImageKind::Full && done[5].image.size == (_vec2<int>{600, 400}));

    // A new request drops work not started and does not redo work under way.
    // Large enough that the first job is still under way when the queue is replaced.
    const file_path big = Capture("big", Format::Png, 3000, 2000);
    wanted = {{big, 1}};
    for (const char* name : {"x1", "x2", "x3"})
        wanted.push_back({Capture(name, Format::Png, 600, 400), 1});
    const file_path later = Capture("later", Format::Png, 600, 400);
    loader.Request(wanted);
    // Time for the worker to pick "big" up; it takes far longer than this to make.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    std::vector<std::string> leaves = Leaves(LoadAll(loader, {{later, 1}, {big, 1}}));
    std::sort(leaves.begin(), leaves.end());
    // "big" comes once, whether it was under way or not yet; the rest of the first queue never runs.
    EXPECT_EQ(leaves, (std::vector<std::string>{"big", "later"}));
    EXPECT_FALSE(loader.Busy());
}

} // namespace
