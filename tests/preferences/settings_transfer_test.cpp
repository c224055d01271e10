#include "preferences/settings_transfer.h"

#include "host/effect_data.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/nimpacker.h"
#include "nimbit/ui/offscreen/offscreen_file_browser.h"
#include "popup/preferences_file.h"
#include "popup/search_data_files.h"
#include "tests/support/data_folders.h"
#include "tests/support/offscreen_test.h"

#include <map>

using nimbit::file_path;
using nimbit::nimpacker;
using nimbit::ui::offscreen_file_browser;
using Message = std::pair<std::string, std::string>;
using Messages = std::vector<Message>;

namespace {

const Message Exported{"Export Successful", "Preferences exported successfully."};
const Message Imported{"Import Successful", "Preferences imported successfully."};
const Message Unreadable{"Failed to Load", "Unable read from the preferences file you selected."};
const Message Damaged{
    "Import Info",
    "There was a problem with the preferences file, some preferences may have not been imported correctly."};
const Message FolderReset{
    "Import Info",
    "The imported gallery path was not found in the local machine, so it was reset to default."};

constexpr uint64_t Moment = 1700000000123456;

struct SettingsTransferTest : OffscreenTest, private_data_folders {
    offscreen_file_browser& dialogs = offscreen_file_browser::instance();
    Messages messages;
    TransferContext context{
        .report = [this](const std::string& t, const std::string& m) { messages.emplace_back(t, m); },
        .clock = Now};
    std::vector<EffectData> catalogue{{1, "Glow", "glow", "Stylize", false},
                                      {2, "Gaussian Blur", "gaussian blur", "Blur", false},
                                      {3, "Tint", "tint", "Color", false},
                                      {4, "Levels", "levels", "Color", false}};
    TransferredSettings current;

    void SetUp() override {
        OffscreenTest::SetUp();
        ASSERT_TRUE(nimbit::make_dir(root / "shots"));
        PreferencesData& p = current.prefs;
        p.theme = UIColorTheme::Light;
        p.captureFolder = (root / "shots").to_string();
        p.shortcutChoice = p.customCtrl = 4;
        p.customKeyName = "A";
        current.blacklist = {{"tint", &catalogue[2], nullptr}};
        current.aliases = {{"gb", &catalogue[1], nullptr}, {"glow", &catalogue[0], &catalogue[3]}};
        current.shortcuts.assign(9, EffectAlias{});
        current.shortcuts[2] = {"Lv", &catalogue[3], nullptr};
        // The user's own files, which no failed transfer may touch.
        ASSERT_TRUE(SavePreferences(current.prefs, current.blacklist, current.aliases, current.shortcuts,
                                    UserSettingsFolder(), true));
    }
    static uint64_t Now() { return Moment; }
    void UseDataFolder(const char* name) { set_env("QUILLO_USER_DATA_DIR", (root / name).to_string()); }
    // Everything below folder, files with their bytes.
    static std::map<std::string, std::string> Snapshot(const file_path& folder) {
        std::map<std::string, std::string> files;
        for (const std::string& name : tree(folder))
            files[name] = nimbit::file_stats(folder.append(name)).type == 1 ? "<folder>"
                                                                            : read_text(folder.append(name));
        return files;
    }
    bool Export(const file_path& target) {
        dialogs.answer({target});
        return ExportPreferences(current, context);
    }
    ImportResult Import(const file_path& source, const PreferencesData& base) {
        dialogs.answer({source});
        return ImportPreferences(base, catalogue, context);
    }
    // A pack of the files given, name and content, as another machine's export would arrive.
    file_path Pack(const std::vector<std::pair<std::string, std::string>>& files,
                   const char* name = "in.kvs") {
        const file_path source = root / "packing", pack = root / name;
        nimbit::remove_dir(source);
        EXPECT_TRUE(nimbit::make_dir(source));
        for (const auto& [file, content] : files) {
            EXPECT_TRUE(nimbit::make_dir(source.append(file).stem()));
            EXPECT_TRUE(write_text(source.append(file), content));
        }
        EXPECT_EQ(nimpacker::pack_files(source, pack), nimpacker::success);
        nimbit::remove_dir(source);
        return pack;
    }
};

std::string Text(const std::vector<unsigned char>& bytes) {
    return {bytes.begin(), bytes.end()};
}

TEST_F(SettingsTransferTest, ExportThenImportOnAFreshMachineWritesTheSameFilesAndFailuresChangeNothing) {
    ASSERT_TRUE(Export(root / "settings.kvs"));
    EXPECT_EQ(messages, Messages{Exported});
    const nimbit::ui::dialog_request& save = dialogs.requests().back();
    EXPECT_TRUE(save.default_name == "quillo_settings.kvs" && save.filters.size() == 1 &&
                save.filters[0].pattern == "*.kvs");
    const auto mine = Snapshot(root / "user"); // compared below: no temporary folder is left in it

    UseDataFolder("fresh");
    messages.clear();
    const ImportResult result = Import(root / "settings.kvs", PreferencesData());
    EXPECT_EQ(messages, Messages{Imported});
    ASSERT_TRUE(result.imported && !result.incomplete && !result.captureFolderReset);
    EXPECT_EQ(tree(root / "fresh"), std::vector<std::string>{"Tarvelo"}); // the caller saves
    const TransferredSettings& in = result.settings;
    ASSERT_TRUE(
        SavePreferences(in.prefs, in.blacklist, in.aliases, in.shortcuts, UserSettingsFolder(), true));
    EXPECT_EQ(Snapshot(root / "fresh"), mine);

    // Failures before the settings are read, each with its message: the user's own files stay byte for
    // byte, and no pack or temporary folder is left.
    const std::string good = read_text(root / "settings.kvs");
    ASSERT_TRUE(write_text(root / "cut.kvs", good.substr(0, good.size() / 2)));
    Pack({{"effects_settings", Text(EncodePreferences(current.prefs))},
          {"big", std::string((16 << 20) + 1, 'x')}},
         "big.kvs");
    // The unpacker refuses a record leading out of its folder; the rest of the pack must not land.
    std::string hostile = read_text(Pack({{"effects_settings", "x"}, {"qq/escaped", "x"}}, "hostile.kvs"));
    for (size_t at; (at = hostile.find("qq/escaped")) != std::string::npos;)
        hostile.replace(at, 10, "../escaped");
    ASSERT_TRUE(write_text(root / "hostile.kvs", hostile));
    // Where "Tarvelo" is a file, no temporary folder can be made.
    ASSERT_TRUE(nimbit::make_dir(root / "blocked") && write_text(root / "blocked/Tarvelo", ""));

    const Message running{"Failed to Save", "There appears to be another export process running."};
    const Message notSaved{"Failed to Save", "Unable to save current settings to disk."};
    const Message noPack{"Failed to Save", "Unable create the export file in the directory you specified."};
    const Message noFolder{"Failed to Load", "Unable to import settings from the file."};
    // clang-format off
    const struct { const char* what; bool import; file_path file; const char* dataFolder; Messages said; } cases[] = {
        {"export cancelled",       false, {},                       "user",    {}},
        {"another export running", false, root / "out.kvs",         "user",    {running}},
        {"export, no temp folder", false, root / "out.kvs",         "blocked", {notSaved}},
        {"unwritable destination", false, root / "missing/out.kvs", "user",    {noPack}},
        {"import cancelled",       true,  {},                       "user",    {}},
        {"import, no temp folder", true,  root / "settings.kvs",    "blocked", {noFolder}},
        {"cut pack",               true,  root / "cut.kvs",         "user",    {Unreadable}},
        {"over the limit",         true,  root / "big.kvs",         "user",    {Unreadable}},
        {"leaves its folder",      true,  root / "hostile.kvs",     "user",    {Unreadable}},
    };
    // clang-format on
    UseDataFolder("user"); // where the other export runs
    const file_path theirs = TransferFolder(Moment).append("theirs");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        UseDataFolder(c.dataFolder);
        if (c.said == Messages{running}) { // the other export's folder
            ASSERT_TRUE(nimbit::make_dir(theirs.stem()) && write_text(theirs, "x"));
        }
        const auto before = Snapshot(root / "user");
        messages.clear();
        EXPECT_FALSE(c.import ? Import(c.file, current.prefs).imported : Export(c.file));
        EXPECT_EQ(messages, c.said);
        EXPECT_EQ(Snapshot(root / "user"), before);
        EXPECT_EQ(tree(root / "blocked"), std::vector<std::string>{"Tarvelo"});
        EXPECT_FALSE(nimbit::file_stats(root / "out.kvs").exists ||
                     nimbit::file_stats(root / "missing").exists);
        nimbit::remove_dir(theirs.stem());
    }
    UseDataFolder("user");
    // A capture folder that cannot be made here (its drive unplugged, say) is no reason to refuse.
    ASSERT_TRUE(write_text(root / "plain file", ""));
    current.prefs.captureFolder = (root / "plain file/Capture").to_string();
    EXPECT_TRUE(Export(root / "out.kvs"));
    EXPECT_EQ(messages.back(), Exported);
}

// What was read and what the user is told, for settings files that are not whole or whose capture
// folder is not on this machine. Each import finds the folder of an earlier one that never finished,
// with a whole settings file in it: it must not be read in place of the pack's.
TEST_F(SettingsTransferTest, DamagedSettingsAndAForeignCaptureFolderAreReported) {
    const std::string whole = Text(EncodePreferences(current.prefs));
    PreferencesData elsewhere = current.prefs;
    elsewhere.captureFolder = (root / "not here").to_string();
    const std::string foreign = Text(EncodePreferences(elsewhere));
    const std::string fresh = (root / "docs/Tarvelo/Quillo/Capture").to_string();
    const std::string shots = current.prefs.captureFolder;
    // Chunks of identifier, size and data, little-endian: a retired field's, and an int of 8 bytes.
    const std::string retired("\x06\0\0\0\x04\0\0\0abcd", 12);
    const std::string longInt = std::string("\x02\0\0\0\x08\0\0\0", 8) + "12345678";
    // clang-format off
    // The flags the caller reads go with the messages.
    const struct { const char* what; std::optional<std::string> settings; Messages said; std::string folder; } cases[] = {
        {"retired chunk",        whole + retired,                        {Imported},              shots},
        {"no settings file",     std::nullopt,                           {Damaged},               shots},
        {"last chunk cut",       whole.substr(0, whole.size() - 1),      {Damaged},               shots},
        {"an int of 8 bytes",    whole + longInt,                        {Damaged},               shots},
        {"folder not here",      foreign,                                {Imported, FolderReset}, fresh},
        {"cut, folder not here", foreign.substr(0, foreign.size() - 2),  {Damaged, FolderReset},  fresh},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::vector<std::pair<std::string, std::string>> files{{"effects_search.txt", "Glow\n-Tint\n"}};
        if (c.settings)
            files.emplace_back("effects_settings", *c.settings);
        PreferencesData base;
        base.captureFolder = shots;
        messages.clear();
        nimbit::remove_dir(file_path(fresh));
        ASSERT_TRUE(nimbit::make_dir(TransferFolder(Moment)) &&
                    write_text(TransferFolder(Moment).append("effects_settings"), whole));
        const ImportResult result = Import(Pack(files), base);
        ASSERT_TRUE(result.imported);
        EXPECT_EQ(messages, c.said);
        EXPECT_EQ(result.settings.prefs.captureFolder, c.folder);
        EXPECT_TRUE(nimbit::file_stats(file_path(c.folder)).type == 1);
        // Whatever the settings file held, what came before a damage is taken, and the lists come
        // regardless.
        EXPECT_EQ(result.settings.prefs.theme, c.settings ? UIColorTheme::Light : UIColorTheme::Dark);
        EXPECT_TRUE(result.settings.aliases.size() == 1 && result.settings.blacklist.size() == 1);
        EXPECT_FALSE(nimbit::file_stats(TransferFolder(Moment)).exists);
    }
}

} // namespace
