#include "nimbit/graphics/jpeg_encoder.h"
#include "nimbit/graphics/png_encoder.h"

#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>

#include <cstring>
#include <vector>

using namespace nimbit::graphics;

namespace {

// Gradients, noise and transparency, in rows padded with bytes that must never reach a file.
struct picture {
    int width, height;
    size_t pitch;
    std::vector<unsigned char> bytes;

    picture(int w, int h, size_t padding) : width(w), height(h), pitch(size_t(w) * 4 + padding) {
        bytes.assign(pitch * size_t(h), 0xEE);
        unsigned seed = 7;
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                seed = seed * 1103515245u + 12345u;
                unsigned char* p = &bytes[size_t(y) * pitch + size_t(x) * 4];
                const unsigned char pixel[4] = {
                    static_cast<unsigned char>(x * 255 / w), static_cast<unsigned char>(y * 255 / h),
                    static_cast<unsigned char>(seed >> 24), static_cast<unsigned char>(x + y)};
                std::memcpy(p, pixel, 4);
            }
    }
    rgba_view view() const { return {bytes.data(), width, height, pitch}; }
    const unsigned char* at(int x, int y) const { return &bytes[size_t(y) * pitch + size_t(x) * 4]; }
};

} // namespace

TEST(ImageEncoders, PngKeepsEveryPixelWithAndWithoutAlpha) {
    for (const auto& [width, height, padding] : {std::tuple{1, 1, 0}, {37, 5, 12}, {300, 41, 4}})
        for (bool alpha : {true, false}) {
            SCOPED_TRACE(testing::Message() << width << "x" << height << (alpha ? " rgba" : " rgb"));
            const picture source(width, height, size_t(padding));
            const std::vector<unsigned char> file = encode_png(source.view(), alpha);
            png_image image{};
            image.version = PNG_IMAGE_VERSION;
            ASSERT_TRUE(png_image_begin_read_from_memory(&image, file.data(), file.size()));
            EXPECT_EQ((image.format & PNG_FORMAT_FLAG_ALPHA) != 0, alpha);
            image.format = PNG_FORMAT_RGBA;
            std::vector<unsigned char> decoded(PNG_IMAGE_SIZE(image));
            ASSERT_TRUE(png_image_finish_read(&image, nullptr, decoded.data(), 0, nullptr));
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    unsigned char want[4];
                    std::memcpy(want, source.at(x, y), 4);
                    want[3] = alpha ? want[3] : 255;
                    ASSERT_EQ(std::memcmp(want, &decoded[(size_t(y) * width + x) * 4], 4), 0)
                        << x << "," << y;
                }
        }
}

// Pixel fidelity of both encoders is also checked through the toolkit's bitmap round trips.
TEST(ImageEncoders, JpgKeepsFullColourResolutionAndEmptyInputsGiveNoFile) {
    const picture source(64, 48, 8);
    const std::vector<unsigned char> file = encode_jpg(source.view());
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, file.data(), static_cast<unsigned long>(file.size()));
    ASSERT_EQ(jpeg_read_header(&info, TRUE), JPEG_HEADER_OK);
    EXPECT_EQ(info.image_width * info.image_height, 64u * 48u);
    EXPECT_EQ(info.comp_info[1].h_samp_factor * info.comp_info[1].v_samp_factor, 1); // no chroma subsampling
    jpeg_destroy_decompress(&info);

    const rgba_view empty[] = {{}, {file.data(), 0, 4, 16}, {file.data(), 4, 0, 16}, {file.data(), 4, 4, 15}};
    for (const rgba_view& view : empty)
        EXPECT_TRUE(encode_png(view).empty() && encode_jpg(view).empty());
    EXPECT_TRUE(encode_jpg({source.bytes.data(), 70000, 1, 280000}).empty()); // beyond JPG's sides
}
