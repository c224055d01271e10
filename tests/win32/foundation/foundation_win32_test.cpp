#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/known_folders.h"
#include "nimbit/filesystem/nimpacker.h"
#include "nimbit/filesystem/write_file_atomic.h"
#include "nimbit/graphics/image_decoder.h"
#include "nimbit/graphics/jpeg_encoder.h"
#include "nimbit/graphics/png_encoder.h"
#include "nimbit/utils/memory_map.h"

#include "forged_files.h"
#include "temp_folder.h"

#include <gtest/gtest.h>
#include <winioctl.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

// What only Windows brings: UTF-16 names, read-only files, reparse points, drive letters, device
// names, and the system's image codecs.

using nimbit::file_path;
using nimbit::file_stats;
using nimbit::nimpacker;
using nimbit::graphics::rgba_image;

namespace {

// A width x height RGBA pattern: a different ramp in each channel, alpha included, smooth enough
// for a JPG to keep close; swapped or shifted channels show.
std::vector<unsigned char> pattern(int width, int height) {
    std::vector<unsigned char> pixels;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (const int v :
                 {x * 255 / width, y * 255 / height, 255 - (x + y) * 255 / (width + height), 255 - x})
                pixels.push_back(static_cast<unsigned char>(v));
    return pixels;
}

// A pack of one file record whose name is given as is, so names no file system would hold can be tried.
std::string pack_of(const std::string& name, const std::string& text) {
    return pack_builder{{}, {{name, deflated(text), -1, -1, 0, 1'600'000'000}}}.build();
}

// A junction (a mount point reparse point) at the empty folder link, leading to target. Unlike a
// symbolic link it needs no privilege; Wine 8 does not support it.
bool make_junction(const file_path& target, const file_path& link) {
    if (!nimbit::make_dir(link))
        return false;
    std::wstring substitute = L"\\??\\" + nimbit::widen(target.to_string());
    std::replace(substitute.begin(), substitute.end(), L'/', L'\\'); // an NT path: backslashes only
    const WORD bytes = static_cast<WORD>(substitute.size() * 2);
    const WORD data_length = static_cast<WORD>(8 + bytes + 4);
    // Tag, data length, reserved; substitute name offset and length, print name offset and length.
    const DWORD tag = IO_REPARSE_TAG_MOUNT_POINT;
    const WORD header[6] = {data_length, 0, 0, bytes, static_cast<WORD>(bytes + 2), 0};
    std::vector<unsigned char> buffer(8 + data_length, 0);
    std::memcpy(buffer.data(), &tag, 4);
    std::memcpy(buffer.data() + 4, header, 12);
    std::memcpy(buffer.data() + 16, substitute.data(), bytes);
    HANDLE folder =
        CreateFileW(nimbit::widen(link.to_string()).c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                    FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    DWORD returned = 0;
    const bool made = folder != INVALID_HANDLE_VALUE &&
                      DeviceIoControl(folder, FSCTL_SET_REPARSE_POINT, buffer.data(), DWORD(buffer.size()),
                                      nullptr, 0, &returned, nullptr);
    if (folder != INVALID_HANDLE_VALUE)
        CloseHandle(folder);
    if (!made)
        nimbit::remove_dir(link);
    return made;
}

TEST(Win32FilePath, DriveLettersAndBackslashesSplitLikeSlashes) {
    // clang-format off
    const std::pair<std::string, std::string> cases[] = {
        {file_path("C:/Users/x").stem().to_string(), "C:/Users"},
        {file_path("C:/Users").stem().to_string(), "C:/"},
        {file_path("C:/").stem().to_string(), ""},
        {file_path("C:\\Users\\x.png").stem().to_string(), "C:\\Users"},
        {file_path("C:\\x").stem().to_string(), "C:\\"},
        {file_path("C:\\dir.d\\file").extension(), ""},
        {file_path("C:\\a\\b.jpg").extension(), "jpg"},
        {file_path("C:\\a\\b.jpg").leaf(false), "b"},
        {file_path("C:/").append("x").to_string(), "C:/x"},
        {file_path("C:\\a\\").append("\\b").to_string(), "C:\\a\\b"},
    };
    // clang-format on
    for (size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(cases[i].first, cases[i].second) << "case " << i;
}

// Without overrides the known folders come from the system, with "/" separators like every path.
TEST(Win32KnownFolders, SystemFoldersExistAndUseSlashes) {
    for (const char* name : {"QUILLO_USER_DATA_DIR", "QUILLO_COMMON_DATA_DIR", "QUILLO_DOCS_DIR"})
        unset_env(name);
    for (const file_path& folder :
         {nimbit::get_user_data_path(), nimbit::get_common_data_path(), nimbit::get_docs_data_path()}) {
        EXPECT_TRUE(folder.to_string().size() > 3 && folder.to_string().find('\\') == std::string::npos &&
                    file_stats(folder).type == 1)
            << folder.to_string();
    }
}

// Names outside ASCII reach the system as UTF-16 and come back as the same UTF-8 everywhere.
TEST(Win32Files, NonAsciiNamesAreSavedListedMappedAndReadBack) {
    temp_folder tmp;
    const file_path folder = tmp / "Überblick/ファ";
    const file_path file = folder.append(file_path("ファイル.png"));
    ASSERT_TRUE(nimbit::make_dir(folder));
    const std::vector<unsigned char> pixels = pattern(9, 7);
    const std::vector<unsigned char> png = nimbit::graphics::encode_png({pixels.data(), 9, 7, 9 * 4});
    ASSERT_TRUE(!png.empty() && nimbit::write_file_atomic(file, png.data(), png.size()));

    EXPECT_EQ(tree(tmp.path()),
              (std::vector<std::string>{"Überblick", "Überblick/ファ", "Überblick/ファ/ファイル.png"}));
    const file_stats stats(file);
    EXPECT_TRUE(stats.exists && stats.type == 0 && stats.size == png.size() &&
                stats.modified > 1'600'000'000);

    std::vector<unsigned char> read;
    ASSERT_TRUE(nimbit::read_file(file, read));
    EXPECT_EQ(read, png);
    {
        // Mapped files cannot be deleted until unmapped: this one goes before the folder is removed.
        const nimbit::memory_map map(file, nimbit::memory_map_access::read, 0, false, false);
        ASSERT_TRUE(map.data() && map.size() == png.size());
        EXPECT_TRUE(std::equal(png.begin(), png.end(), map.data()));
        EXPECT_TRUE(map.same_file(file));
        rgba_image image;
        ASSERT_TRUE(nimbit::graphics::decode_image(map.data(), map.size(), 1000, image));
        EXPECT_EQ(image.pixels, pixels);
    }

    // Packed and unpacked under a non-ASCII destination, the names survive too.
    ASSERT_EQ(nimpacker::pack_files(tmp / "Überblick", tmp / "päck"), nimpacker::success);
    ASSERT_EQ(nimpacker::unpack_files(tmp / "päck", tmp / "été"), nimpacker::success);
    std::vector<unsigned char> unpacked;
    ASSERT_TRUE(nimbit::read_file(tmp / "été/ファ/ファイル.png", unpacked));
    EXPECT_EQ(unpacked, png);
    EXPECT_TRUE(nimbit::remove_dir(tmp / "Überblick") && !file_stats(file).exists);
}

// The rename replaces a file whole; where Windows refuses it (a read-only target), the old content
// stays and no temporary file is left.
TEST(Win32Files, AtomicReplaceKeepsTheOldFileWhenTheSystemRefuses) {
    temp_folder tmp;
    const file_path target = tmp / "settings";
    ASSERT_TRUE(write_text(target, "old") && nimbit::write_file_atomic(target, "new", 3));
    EXPECT_EQ(read_text(target), "new");

    const std::wstring wide = nimbit::widen(target.to_string());
    ASSERT_TRUE(SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_FALSE(nimbit::write_file_atomic(target, "newer", 5));
    EXPECT_EQ(read_text(target), "new");
    EXPECT_EQ(tree(tmp.path()), std::vector<std::string>{"settings"});
    SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_NORMAL);

    // A file held open by a reader that shares nothing but reading cannot be replaced either.
    HANDLE held =
        CreateFileW(wide.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(nimbit::write_file_atomic(target, "newest", 6));
    CloseHandle(held);
    EXPECT_EQ(read_text(target), "new");
    EXPECT_EQ(tree(tmp.path()), std::vector<std::string>{"settings"});
}

// Names Windows would read as a path, a stream or a device never reach the system from a pack.
TEST(Win32Packs, NamesTheSystemWouldReadOtherwiseAreRefused) {
    temp_folder tmp;
    const file_path dest = tmp / "dest";
    ASSERT_TRUE(nimbit::make_dir(dest));
    for (const char* bad :
         {"..\\escape", "a\\..\\..\\escape", "C:/escape", "C:escape", "f:stream", "nul", "con.txt", "COM1",
          "lpt9.log", "trailing.", "trailing ", "a\x01", "what?", "a*"}) {
        EXPECT_EQ(unpack(pack_of(bad, "x"), dest), nimpacker::cannot_create_file) << bad;
    }
    EXPECT_TRUE(tree(dest).empty() && !file_stats(tmp / "escape").exists);
    // Near misses are plain names.
    for (const char* fine : {"console", "nul_not", "COM", "a.b", "..x"})
        EXPECT_EQ(unpack(pack_of(fine, fine), dest), nimpacker::success) << fine;
    EXPECT_EQ(read_text(dest.append("nul_not")), "nul_not");
    EXPECT_EQ(file_stats(dest.append("a.b")).modified, 1'600'000'000);
}

// A junction or link planted in the destination, pointing outside it, is neither entered nor
// written through, and removing the destination leaves what it points to.
TEST(Win32Packs, PlantedLinksAreNeverFollowed) {
    temp_folder tmp;
    const file_path dest = tmp / "dest", outside = tmp / "outside";
    ASSERT_TRUE(nimbit::make_dir(dest) && nimbit::make_dir(outside) &&
                write_text(outside.append("target"), "keep"));
    const bool junction = make_junction(outside, dest.append("junction"));
    const bool links = links_available() && make_symlink(outside, dest.append("folder_link")) &&
                       make_symlink(outside.append("target"), dest.append("file_link"));
    if (!junction && !links)
        GTEST_SKIP() << "this system makes neither junctions nor symbolic links (Wine 8: links report "
                        "success and make nothing, junctions are not supported)";
    // clang-format off
    const std::pair<const char*, bool> planted[] = {
        {"junction/target", junction}, {"folder_link/target", links}, {"file_link", links}};
    // clang-format on
    for (const auto& [name, made] : planted)
        EXPECT_TRUE(!made || unpack(pack_of(name, "x"), dest) == nimpacker::cannot_create_file) << name;
    EXPECT_EQ(read_text(outside.append("target")), "keep");
    EXPECT_TRUE(nimbit::remove_dir(dest));
    EXPECT_EQ(read_text(outside.append("target")), "keep");
}

// The system's codecs: exact PNG and close JPG round trips, reduced JPGs, and cut files that fail
// cleanly.
TEST(Win32Codecs, RoundTripsReducedDecodesAndDamage) {
    const int width = 64, height = 40;
    const std::vector<unsigned char> pixels = pattern(width, height);
    const nimbit::graphics::rgba_view view{pixels.data(), width, height, size_t(width) * 4};
    const std::vector<unsigned char> png = nimbit::graphics::encode_png(view),
                                     jpg = nimbit::graphics::encode_jpg(view);
    rgba_image image;
    ASSERT_TRUE(nimbit::graphics::decode_png(png.data(), png.size(), width * height, image));
    EXPECT_TRUE(image.pixels == pixels && image.alpha);
    EXPECT_FALSE(nimbit::graphics::decode_png(png.data(), png.size(), width * height - 1, image) ||
                 !image.pixels.empty())
        << "the cap, from the header";

    ASSERT_TRUE(nimbit::graphics::decode_jpeg(jpg.data(), jpg.size(), width * height, image));
    ASSERT_EQ(image.size, (nimbit::_vec2<int>{width, height}));
    EXPECT_FALSE(image.alpha);
    int worst = 0;
    for (size_t i = 0; i < pixels.size(); ++i)
        if (i % 4 != 3)
            worst = std::max(worst, std::abs(int(image.pixels[i]) - int(pixels[i])));
    EXPECT_LE(worst, 12) << "smooth ramps at the highest quality";

    nimbit::_vec2<int> full;
    ASSERT_TRUE(nimbit::graphics::decode_image(jpg.data(), jpg.size(), width * height, image, 16, &full));
    EXPECT_TRUE(image.size == (nimbit::_vec2<int>{16, 10}) && full == (nimbit::_vec2<int>{width, height}));

    // Cut files; a damaged checksum is caught by the shared codec tests, which run here too.
    // clang-format off
    struct damage { const std::vector<unsigned char>* file; size_t keep; const char* what; };
    const damage cases[] = {
        {&png, png.size() / 2, "png cut in half"},
        {&png, png.size() - 1, "png without its last byte"},
        {&png, 33, "png header only"},
        {&jpg, jpg.size() / 2, "jpg cut in half"},
        {&jpg, jpg.size() - 2, "jpg without its end"},
        {&jpg, 20, "jpg header only"},
        {&jpg, 3, "jpg signature only"},
    };
    // clang-format on
    for (const damage& d : cases) {
        const std::vector<unsigned char> bytes(d.file->begin(), d.file->begin() + d.keep);
        EXPECT_FALSE(nimbit::graphics::decode_image(bytes.data(), bytes.size(), 1 << 20, image)) << d.what;
        EXPECT_TRUE(image.pixels.empty()) << d.what;
    }
}

} // namespace
