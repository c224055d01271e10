#include "nimbit/filesystem/file_operations.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/folder_iterator.h"
#include "nimbit/filesystem/known_folders.h"
#include "nimbit/filesystem/nimpacker.h"
#include "nimbit/filesystem/write_file_atomic.h"

#if !defined(_WIN32)
#include "file_size_limit.h"
#endif
#include "forged_files.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

using nimbit::file_path;
using nimbit::file_stats;
using nimbit::nimpacker;

namespace {

TEST(FilePath, JoinsAndSplitsAtTheLastSeparator) {
    // clang-format off
    const std::pair<std::string, std::string> cases[] = {
        {file_path("a/").append("/b").to_string(), "a/b"},
        {file_path("").append("/b").to_string(), "b"},
        {file_path("/").append("b").to_string(), "/b"},
        {file_path("a").append("").to_string(), "a"},
        {file_path("a").append_extension("png").to_string(), "a.png"},
        {file_path("dir.old/file").extension(), ""},
        {file_path("x.tar.gz").extension(), "gz"},
        {file_path("a/b.png/").leaf(false), "b"},
        {file_path("a/b.png/").leaf(true), "b.png"},
        {file_path("a/b/c.png").stem().to_string(), "a/b"},
        {file_path("a/b/").stem().to_string(), "a"},
        {file_path("c.png").stem().to_string(), ""},
        {file_path("a\\b\\c").fix_separator().to_string(), "a/b/c"},
    };
    // clang-format on
    for (size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(cases[i].first, cases[i].second) << "case " << i;
    // Ordering is bytewise with the shorter first.
    EXPECT_TRUE(file_path("ab") < file_path("abc") && file_path("B") < file_path("a") &&
                !(file_path("a") < file_path("a")));
}

TEST(FileOperations, StatsMakeCopyAndRemoveFoldersAndFiles) {
    temp_folder tmp;
    ASSERT_TRUE(write_text(tmp / "f.txt", "12345"));
    const file_stats missing(tmp / "nothing/here"), file(tmp / "f.txt"), folder(tmp.path());
    EXPECT_TRUE(!missing.exists && missing.type == 2 && !file_stats(file_path()).exists);
    EXPECT_TRUE(file.exists && file.type == 0 && file.size == 5u && folder.exists && folder.type == 1);
#if defined(__linux__)
    EXPECT_EQ(file_stats(file_path("/proc/version")).created, 0) << "no birth time kept: none made up";
#endif

    EXPECT_FALSE(nimbit::set_file_dates(tmp / "missing", 0, 0));

    // make_dir creates every missing level, a trailing separator or not.
    EXPECT_TRUE(nimbit::make_dir(tmp / "a/b/c/"));
    EXPECT_EQ(tree(tmp.path()), (std::vector<std::string>{"a", "a/b", "a/b/c", "f.txt"}));
    EXPECT_TRUE(nimbit::make_dir(tmp / "a/b/c")) << "an existing folder is success";

    // A file in the way.
    EXPECT_FALSE(nimbit::make_dir(tmp / "f.txt") || nimbit::make_dir(tmp / "f.txt/sub/deeper"));
    EXPECT_FALSE(nimbit::make_dir(file_path()));

    // copy_dir copies a folder into another, but never into itself.
    ASSERT_TRUE(write_text(tmp / "a/b/f", "x") && nimbit::make_dir(tmp / "copy"));
    EXPECT_TRUE(nimbit::copy_dir(tmp / "a", tmp / "copy") && read_text(tmp / "copy/a/b/f") == "x");
    EXPECT_FALSE(nimbit::copy_dir(tmp / "a", tmp / "a") || nimbit::copy_dir(tmp / "a", tmp / "a/b"));

    // read_file reads files within its limit only.
    std::vector<unsigned char> read;
    EXPECT_TRUE(nimbit::read_file(tmp / "f.txt", read, 5) && read == read_bytes(tmp / "f.txt"));
    EXPECT_FALSE(nimbit::read_file(tmp / "f.txt", read, 4) || nimbit::read_file(tmp / "a", read) ||
                 nimbit::read_file(tmp / "missing", read));
    EXPECT_TRUE(nimbit::remove_file(tmp / "f.txt") && !nimbit::remove_file(tmp / "f.txt"));

    // copy_file replaces other files, but copying a file onto itself, under whatever name, fails and
    // leaves it whole.
    ASSERT_TRUE(write_text(tmp / "f", "contents") && write_text(tmp / "other", "much longer old contents"));
    ASSERT_TRUE(make_hard_link(tmp / "f", tmp / "hard"));
    ASSERT_TRUE(!links_available() || make_symlink(tmp / "f", tmp / "soft"));
    for (const char* same : {"f", "hard", "soft", "./f"}) {
        if (!links_available() && same == std::string("soft"))
            continue;
        EXPECT_FALSE(nimbit::copy_file(tmp / "f", tmp / same)) << same;
        EXPECT_FALSE(nimbit::copy_file(tmp / same, tmp / "f")) << same;
        EXPECT_EQ(read_text(tmp / "f"), "contents") << same;
    }
    EXPECT_TRUE(nimbit::copy_file(tmp / "f", tmp / "other") && nimbit::copy_file(tmp / "f", tmp / "new"));
    EXPECT_TRUE(read_text(tmp / "other") == "contents" && read_text(tmp / "new") == "contents");
    EXPECT_FALSE(nimbit::copy_file(tmp / "missing", tmp / "new2") || file_stats(tmp / "new2").exists);
}

// The enumerator hands out "." and ".." as well; tree() drops them, so the raw walk is checked here.
TEST(FolderIterator, WalksBreadthFirstAndYieldsUsablePaths) {
    temp_folder tmp;
    ASSERT_TRUE(nimbit::make_dir(tmp / "a/b/c") && nimbit::make_dir(tmp / "d"));
    for (const char* file : {"f0", "a/f1", "a/b/f2", "a/b/c/f3", "d/f4"})
        ASSERT_TRUE(write_text(tmp / file, ""));
    std::vector<size_t> depths;
    for (const nimbit::folder_entry& entry : nimbit::folder_enumerator{tmp.path(), true}) {
        const std::string path = entry.path.to_string().substr(tmp.path().to_string().size());
        EXPECT_EQ(entry.is_folder, file_stats(entry.path).type == 1) << path;
        depths.push_back(std::count(path.begin(), path.end(), '/'));
    }
    // Nine entries plus "." and ".." from the root and its four sub-folders, nothing deeper first.
    EXPECT_EQ(depths.size(), 9u + 10u);
    EXPECT_TRUE(std::is_sorted(depths.begin(), depths.end()));
    EXPECT_EQ(tree(tmp.path(), false).size(), 3u) << "without recursion only the top level";

    nimbit::folder_iterator it(nimbit::folder_enumerator{tmp / "missing", true});
    EXPECT_TRUE(it.at_end() && (++it).at_end());
}

TEST(WriteFileAtomic, CreatesAndReplacesKeepingPermissionsAndFailuresLeaveTheOldFile) {
    temp_folder tmp;
    const file_path target = tmp / "settings";
    ASSERT_TRUE(nimbit::write_file_atomic(target, "first version", 13) &&
                read_text(target) == "first version");

#if !defined(_WIN32) // no permission bits: files take the folder's access rights
    ASSERT_EQ(::chmod(target.c_str(), 0640), 0);
#endif
    ASSERT_TRUE(nimbit::write_file_atomic(target, "second", 6) && read_text(target) == "second");
#if !defined(_WIN32)
    EXPECT_EQ(std::filesystem::status(target.c_str()).permissions(), std::filesystem::perms(0640));
#endif

    EXPECT_TRUE(nimbit::write_file_atomic(target, nullptr, 0) && nimbit::file_stats(target).size == 0);
    ASSERT_TRUE(write_text(target, "old"));

    // Failures leave the old file and no litter.
    EXPECT_FALSE(nimbit::write_file_atomic(tmp / "missing/settings", "x", 1) ||
                 nimbit::write_file_atomic(file_path(), "x", 1));

#if !defined(_WIN32) // no per-process file size limit on Windows
    // A write that runs out of room half-way: the file-size limit makes write() fail with EFBIG.
    const std::string big(64 * 1024, 'n');
    {
        file_size_limit limit(4096);
        EXPECT_FALSE(nimbit::write_file_atomic(target, big.data(), big.size()));
    }
#endif
    EXPECT_EQ(read_text(target), "old");
    EXPECT_EQ(tree(tmp.path()), std::vector<std::string>{"settings"}) << "no temporary file is left behind";
}

const char* const folder_variables[] = {"QUILLO_USER_DATA_DIR", "QUILLO_COMMON_DATA_DIR", "QUILLO_DOCS_DIR",
                                        "QUILLO_SHARED_DOCS_DIR", "QUILLO_TEST_ASSETS"};

// Every well-known folder pointed into a temporary folder, then, on systems without known folders of
// their own, none.
TEST(KnownFolders, OverridesModesAndDefaultsChooseTheFolder) {
    temp_folder tmp;
    ASSERT_TRUE(nimbit::make_dir(tmp / "user") && nimbit::make_dir(tmp / "common/Tarvelo"));
    unset_env("QUILLO_TEST_ASSETS");
    const char* const leaves[] = {"user", "common", "docs", "shared"};
    for (size_t i = 0; i < std::size(leaves); ++i)
        set_env(folder_variables[i], (tmp / leaves[i]).to_string());
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "", 2), tmp / "shared");
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "QUILLO_TEST_ASSETS", 0), tmp / "docs");

    // The variable wins over a one-character entry, which does not count.
    set_env("QUILLO_TEST_ASSETS", "/from/variable");
    ASSERT_TRUE(write_text(tmp / "common/Tarvelo/Quillo", "Other=1\nAssetsPath=x\n"));
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "QUILLO_TEST_ASSETS", 0), file_path("/from/variable"));

    ASSERT_TRUE(write_text(tmp / "common/Tarvelo/Quillo", "Other=1\r\nAssetsPath=/opt/assets\r\n"));
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "QUILLO_TEST_ASSETS", 0), file_path("/opt/assets"));

    // The common folder's modes: the variable, then the user's or the machine's folder.
    EXPECT_EQ(nimbit::get_common_data_path("QUILLO_TEST_ASSETS", 0), file_path("/from/variable"));
    EXPECT_EQ(nimbit::get_common_data_path("QUILLO_TEST_ASSETS", 1), tmp / "user");

    for (const char* name : folder_variables)
        unset_env(name);
#if !defined(_WIN32) // Windows has its known folders instead
    // Without overrides: the XDG variables, then the home folder.
    set_env("XDG_CONFIG_HOME", "/xdg/config");
    set_env("XDG_DOCUMENTS_DIR", "/xdg/docs");
    EXPECT_EQ(nimbit::get_user_data_path(), file_path("/xdg/config"));
    EXPECT_EQ(nimbit::get_docs_data_path(), file_path("/xdg/docs"));
    EXPECT_EQ(nimbit::get_common_data_path(), file_path("/etc/xdg"));
    unset_env("XDG_CONFIG_HOME");
    unset_env("XDG_DOCUMENTS_DIR");
    set_env("HOME", "/home/artist");
    EXPECT_EQ(nimbit::get_user_data_path(), file_path("/home/artist/.config"));
    EXPECT_EQ(nimbit::get_docs_data_path("Quillo", "", 2), file_path("/home/Shared/Documents"));
#endif
}

std::string noise(size_t n, uint32_t seed) {
    std::string out(n, '\0');
    for (auto& c : out) {
        seed = seed * 1664525u + 1013904223u;
        c = static_cast<char>(seed >> 24);
    }
    return out;
}

TEST(Nimpacker, RoundTripKeepsTreeContentsAndDates) {
    temp_folder tmp;
    const file_path src = tmp / "settings";
    ASSERT_TRUE(nimbit::make_dir(src.append("a/b/c")) && nimbit::make_dir(src.append("empty")));
    const std::string big = noise(100000, 7) + std::string(100000, 'q'); // many chunks and windows
    ASSERT_TRUE(write_text(src.append("top.txt"), "hello") && write_text(src.append("a/b/big.bin"), big) &&
                write_text(src.append("a/b/c/zero"), ""));
    ASSERT_TRUE(nimbit::set_file_dates(src.append("a/b/big.bin"), 1500000000, 1650000000));

    const file_path pack = tmp / "export.kvs";
    ASSERT_EQ(nimpacker::pack_files(src, pack), nimpacker::success);
    EXPECT_LT(file_stats(pack).size, big.size()) << "the data is compressed";

    // From the file here; every other case reads packs from memory.
    const file_path out = tmp / "out"; // made by unpacking
    ASSERT_EQ(nimpacker::unpack_files(pack, out), nimpacker::success);
    EXPECT_EQ(tree(out), tree(src));
    EXPECT_TRUE(read_text(out.append("top.txt")) == "hello" && read_text(out.append("a/b/big.bin")) == big);
    EXPECT_TRUE(file_stats(out.append("a/b/c/zero")).size == 0u &&
                file_stats(out.append("a/b/big.bin")).modified == 1650000000);

    const auto before = tree(tmp.path());
    EXPECT_EQ(nimpacker::pack_files(tmp / "missing", tmp / "p"), nimpacker::source_not_a_folder);
    EXPECT_EQ(nimpacker::pack_files(src, tmp / "no/such/folder/p"), nimpacker::cannot_create_pack);
    EXPECT_EQ(tree(tmp.path()), before) << "no temporary pack is left behind";
}

TEST(Nimpacker, EmptyPacksUnpackAndCutOrForeignOnesAreReportedWithoutReadingPastTheEnd) {
    temp_folder tmp;
    EXPECT_TRUE(unpack(pack_builder().build(), tmp.path()) == nimpacker::success && tree(tmp.path()).empty());
    EXPECT_EQ(unpack("abcd", tmp.path()), nimpacker::bad_magic);
    EXPECT_EQ(nimpacker::unpack_files(nullptr, 100, tmp.path()), nimpacker::bad_magic);
    EXPECT_EQ(nimpacker::unpack_files(tmp / "missing.kvs", tmp.path()), nimpacker::cannot_open_pack);

    const std::string full = pack_builder{{"one", "two"}, {{"one/f", deflated("content")}}}.build();
    ASSERT_EQ(unpack(full, tmp / "ok"), nimpacker::success);

    const size_t folder_table_end = 8 + (4 + 3) * 2;
    // Every cut inside the folder table is 30, every cut inside the file table 12. The copy
    // is exact-size so that the sanitizers catch any read past it.
    for (size_t cut = 0; cut < full.size(); ++cut) {
        const std::vector<unsigned char> exact(full.begin(), full.begin() + static_cast<long>(cut));
        EXPECT_EQ(nimpacker::unpack_files(exact.data(), exact.size(), tmp / "cut"),
                  cut < 4                                   ? nimpacker::bad_magic
                  : cut < folder_table_end                  ? nimpacker::folder_table_truncated
                  : cut < folder_table_end + 4 + 4 + 5 + 28 ? nimpacker::file_table_truncated
                                                            : nimpacker::stream_truncated)
            << cut;
    }

    // A name length far beyond the data.
    std::string huge = full;
    huge[8] = huge[9] = '\xFF';
    EXPECT_EQ(unpack(huge, tmp / "huge"), nimpacker::folder_table_truncated);
}

TEST(Nimpacker, PathsThatLeaveTheDestinationAndCreationFailuresAreRefused) {
    temp_folder tmp;
    const file_path dest = tmp / "dest";
    ASSERT_TRUE(nimbit::make_dir(dest));
    // A NUL byte would cut "..\0x" down to ".." on its way to the system.
    const std::vector<std::string> bad_names = {
        "../escape", "a/../../escape", "/tmp/escape-abs", "..", std::string("..\0x", 4), "a//b", "", "."};
    for (const std::string& bad : bad_names) {
        EXPECT_EQ(unpack(pack_builder{{bad}, {}}.build(), dest), nimpacker::cannot_create_folder) << bad;
        EXPECT_EQ(unpack(pack_builder{{}, {{bad, deflated("x")}}}.build(), dest),
                  nimpacker::cannot_create_file)
            << bad;
    }
    // A bad record anywhere refuses the pack before anything is made for the good ones.
    EXPECT_EQ(
        unpack(pack_builder{{"ok"}, {{"ok/f", deflated("x")}, {"../escape", deflated("x")}}}.build(), dest),
        nimpacker::cannot_create_file);
    EXPECT_FALSE(file_stats(tmp / "escape").exists || file_stats("/tmp/escape-abs").exists);
    EXPECT_TRUE(tree(dest).empty());

    // Names that merely contain dots are fine.
    EXPECT_EQ(unpack(pack_builder{{"a..b", "./c"}, {{"a..b/..x", deflated("y")}}}.build(), dest),
              nimpacker::success);
    EXPECT_EQ(read_text(dest.append("a..b/..x")), "y");

    // The first failing record ends the run; earlier files stay.
    const pack_builder partial{
        {}, {{"first", deflated("1")}, {"missing/second", deflated("2")}, {"third", deflated("3")}}};
    EXPECT_EQ(unpack(partial.build(), tmp.path()), nimpacker::cannot_create_file);
    EXPECT_TRUE(read_text(tmp / "first") == "1" && !file_stats(tmp / "third").exists);
}

TEST(Nimpacker, StreamAndWriteFaults) {
    temp_folder tmp;
    const std::string stream = deflated(noise(50000, 3));

    ASSERT_TRUE(write_text(tmp / "empty", "old contents"));
    // A date past 2106 needs the upper half of its 64 bits.
    EXPECT_EQ(unpack(pack_builder{{},
                                  {{"empty", "", -1, -1, 0, 1'600'000'000},
                                   {"dated", deflated("d"), -1, -1, 0, 5'000'000'000}}}
                         .build(),
                     tmp.path()),
              nimpacker::success);
    EXPECT_EQ(file_stats(tmp / "dated").modified, 5'000'000'000);
    EXPECT_TRUE(file_stats(tmp / "empty").exists && file_stats(tmp / "empty").size == 0u);
    EXPECT_EQ(file_stats(tmp / "empty").modified, 1'600'000'000); // an empty file gets its dates too

    const auto length = static_cast<long>(stream.size());
    // clang-format off
    const std::pair<pack_builder::file_entry, unsigned> faults[] = {
        {{"length cut short", stream, length / 2}, nimpacker::stream_truncated},
        {{"length past the end", stream, length + 100}, nimpacker::stream_truncated},
        {{"offset far beyond", stream, -1, 0x7FFFFFF0}, nimpacker::stream_truncated},
        {{"not a stream", noise(3000, 11)}, nimpacker::corrupt_stream},
    };
    // clang-format on
    for (const auto& [entry, code] : faults)
        EXPECT_EQ(unpack(pack_builder{{}, {entry}}.build(), tmp.path()), code) << entry.name;

    // The file form bounds its reads by the file's size in the same way.
    const pack_builder fault{{}, {faults[1].first}};
    ASSERT_TRUE(write_text(tmp / "p.kvs", fault.build()));
    EXPECT_EQ(nimpacker::unpack_files(tmp / "p.kvs", tmp.path()), nimpacker::stream_truncated);

#if !defined(_WIN32) // no per-process file size limit on Windows
    // A write that runs out of room half-way: the file-size limit makes write() fail with EFBIG.
    const std::string pack = pack_builder{{}, {{"big", deflated(noise(100000, 5))}}}.build();
    file_size_limit limit(4096);
    EXPECT_EQ(unpack(pack, tmp.path()), nimpacker::write_failed);
#endif
}

TEST(Nimpacker, RecordsThatInflateToOtherThanTheirSizeOrPacksOverTheLimitAreRefused) {
    temp_folder tmp;
    const std::string zeros = deflated(std::string(1 << 20, '\0')); // a mebibyte in a kilobyte
    // clang-format off
    const struct { const char* what; std::string stream; long size; } damaged[] = {
        {"far past its size", zeros, 10},
        {"one byte past", deflated("eleven byte"), 10},
        {"short of its size", deflated("short"), 10},
        {"no stream for a size", "", 10},
    };
    // clang-format on
    for (const auto& [what, stream, size] : damaged) {
        EXPECT_EQ(unpack(pack_builder{{}, {{"f", stream, -1, -1, 0, 0, size}}}.build(), tmp.path()),
                  nimpacker::corrupt_stream)
            << what;
        EXPECT_LE(file_stats(tmp / "f").size, 10u) << what;
    }

    // The sizes add up to 11: refused under that with nothing made, folders included.
    const std::string two =
        pack_builder{{"sub"}, {{"sub/a", deflated("123456")}, {"b", deflated("12345")}}}.build();
    EXPECT_TRUE(unpack(two, tmp / "over", 10) == nimpacker::pack_too_large &&
                !file_stats(tmp / "over").exists);
    EXPECT_TRUE(unpack(two, tmp / "at", 11) == nimpacker::success && read_text(tmp / "at/sub/a") == "123456");

    // Fifty honest mebibyte records in a pack of some fifty kilobytes, read from a file.
    pack_builder many;
    for (int i = 0; i < 50; ++i)
        many.files.push_back({"f" + std::to_string(i), zeros});
    ASSERT_TRUE(write_text(tmp / "many.kvs", many.build()));
    EXPECT_EQ(nimpacker::unpack_files(tmp / "many.kvs", tmp / "many", 16 << 20), nimpacker::pack_too_large);
    EXPECT_FALSE(file_stats(tmp / "many").exists);
}

// Links, hard links and pipes in a folder, pointing outside it, are never written through nor waited
// on by unpacking into it (the record that meets one fails), and removing the folder removes them,
// at the top or anywhere inside, never what they point to.
#if !defined(_WIN32) // pipes; the Windows links are planted in foundation_win32_test.cpp
TEST(Links, NeitherUnpackingIntoAFolderNorRemovingItFollowsWhatItHolds) {
    temp_folder tmp;
    const file_path dest = tmp / "dest", outside = tmp / "outside";
    ASSERT_TRUE(nimbit::make_dir(dest.append("a/b")) && nimbit::make_dir(outside.append("deep")) &&
                write_text(outside.append("target"), "keep") &&
                write_text(outside.append("deep/keep"), "keep"));
    // clang-format off
    const std::pair<const char*, const char*> links[] = {
        {"dest/folder_link", "outside"}, {"dest/file_link", "outside/target"},
        {"dest/a/b/file_link", "outside/target"}, {"dest/a/up", "."} /* the folder holding the whole test */,
        {"dest/a/dangling", "no/such/thing"}, {"top_link", "outside"}, {"top_link2", "outside"},
    };
    // clang-format on
    for (const auto& [link, target] : links)
        ASSERT_TRUE(make_symlink(tmp / target, tmp / link)) << link;
    ASSERT_TRUE(make_hard_link(outside.append("target"), dest.append("hard_link")) &&
                ::mkfifo(dest.append("pipe").c_str(), 0600) == 0);

    const std::string x = deflated("x");
    // clang-format off
    const std::pair<pack_builder, unsigned> cases[] = {
        {{{"folder_link"}, {}}, nimpacker::cannot_create_folder},
        {{{"folder_link/sub"}, {}}, nimpacker::cannot_create_folder},
        {{{}, {{"folder_link/target", x}}}, nimpacker::cannot_create_file},
        {{{}, {{"folder_link/new", x}}}, nimpacker::cannot_create_file},
        {{{}, {{"file_link", x}}}, nimpacker::cannot_create_file},
        {{{}, {{"hard_link", x}}}, nimpacker::cannot_create_file},
        {{{}, {{"pipe", x}}}, nimpacker::cannot_create_file},
    };
    // clang-format on
    for (size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(unpack(cases[i].first.build(), dest), cases[i].second) << i;
    EXPECT_TRUE(std::filesystem::is_symlink(dest.append("file_link").c_str()));
    // A device is not a file to unpack into either.
    EXPECT_EQ(unpack(pack_builder{{}, {{"null", x}}}.build(), file_path("/dev")),
              nimpacker::cannot_create_file);

    // A link given as the folder goes as a link, a trailing separator or not.
    EXPECT_TRUE(nimbit::remove_dir(tmp / "top_link") && nimbit::remove_dir(tmp / "top_link2/"));
    EXPECT_TRUE(nimbit::remove_dir(dest) && !file_stats(dest).exists && !nimbit::remove_dir(dest));
    const std::vector<std::string> left = {"outside", "outside/deep", "outside/deep/keep", "outside/target"};
    EXPECT_EQ(tree(tmp.path()), left);
    EXPECT_TRUE(read_text(outside.append("target")) == "keep" &&
                read_text(outside.append("deep/keep")) == "keep");

    // A file is not a folder: left alone.
    EXPECT_FALSE(nimbit::remove_dir(outside.append("target")) || nimbit::remove_dir(file_path()));
    EXPECT_EQ(tree(tmp.path()), left);
}
#endif

} // namespace
