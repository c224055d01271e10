#include "popup/search_data_files.h"

#include "host/effect_data.h"
#include "nimbit/filesystem/file_path.h"
#include "nimbit/filesystem/file_stats.h"
#include "nimbit/filesystem/known_folders.h"
#include "nimbit/filesystem/write_file_atomic.h"
#include "nimbit/utils/string_utils.h"
#include "popup/catalogue_index.h"
#include "popup/effect_alias.h"
#include "popup/user_lists.h"

#include <algorithm>
#include <cstdio>

namespace {

// Hand-written lists stay far below this; a larger file is read up to here and its tail ignored
// rather than pulled whole into the host's memory.
constexpr size_t MaxDataFileSize = 16u << 20;

// Without a base folder there is no settings folder: a bare "Tarvelo" would land in whatever the
// host's working folder happens to be.
nimbit::file_path SettingsFolderUnder(const nimbit::file_path& base) {
    return base.empty() ? nimbit::file_path() : base.append("Tarvelo");
}

std::string ReadTextFile(const nimbit::file_path& folder, std::string_view name) {
    std::string text;
    if (folder.empty())
        return text;
    std::FILE* file = std::fopen(folder.append(name).c_str(), "rb");
    if (file == nullptr)
        return text;
    char buffer[16384];
    while (text.size() < MaxDataFileSize) {
        const size_t want = std::min(sizeof buffer, MaxDataFileSize - text.size());
        const size_t got = std::fread(buffer, 1, want, file);
        text.append(buffer, got);
        if (got < want)
            break;
    }
    std::fclose(file);
    return text;
}

// Calls f for every line of text, the "\n" excluded; the text after the last "\n" counts as a line.
template <class F> void ForEachLine(std::string_view text, F&& f) {
    while (!text.empty()) {
        const size_t end = text.find('\n');
        f(text.substr(0, end));
        if (end == std::string_view::npos)
            break;
        text.remove_prefix(end + 1);
    }
}

} // namespace

void ParseSearchData(std::string_view text, const CatalogueIndex& catalogue,
                     std::vector<EffectAlias>& blacklist, std::vector<EffectAlias>& aliases) {
    ForEachLine(text, [&](std::string_view rawLine) {
        const std::string line = nimbit::string_lower(rawLine);
        std::string_view rest = line;
        std::string alias;
        const size_t equals = rest.find('=');
        const bool hasAlias = equals != std::string_view::npos;
        if (hasAlias) {
            alias = nimbit::trim(rest.substr(0, equals));
            rest.remove_prefix(equals + 1);
        }
        std::string name, overrideName;
        const size_t hash = rest.find('#');
        if (hash != std::string_view::npos) {
            overrideName = nimbit::trim(rest.substr(hash + 1));
            name = nimbit::trim(rest.substr(0, hash));
        } else {
            name = nimbit::trim(rest);
        }
        if (name.empty())
            return;
        // Only the minus itself is taken off: "- Name" looks for a name that begins with a blank.
        // A minus behind "=" belongs to the name, so "x = -Name" is an alias of "-name".
        const bool blacklisted = !hasAlias && name[0] == '-';
        if (blacklisted)
            name.erase(0, 1);
        const EffectData* effect = catalogue.Find(name);
        if (effect == nullptr)
            return;
        const EffectData* replacement = overrideName.empty() ? nullptr : catalogue.Find(overrideName);
        EffectAlias entry{hasAlias ? std::move(alias) : effect->search_name, effect, replacement};
        (blacklisted ? blacklist : aliases).push_back(std::move(entry));
    });
}

void ParseShortcutsData(std::string_view text, const CatalogueIndex& catalogue,
                        std::vector<EffectAlias>& shortcuts) {
    shortcuts.assign(ShortcutSlotCount, EffectAlias{});
    size_t filled = 0;
    ForEachLine(text, [&](std::string_view line) {
        if (filled >= ShortcutSlotCount)
            return;
        const size_t equals = line.find('=');
        if (equals == std::string_view::npos)
            return;
        const EffectData* effect =
            catalogue.Find(nimbit::trim(nimbit::string_lower(line.substr(equals + 1))));
        if (effect == nullptr)
            return;
        shortcuts[filled++] = EffectAlias{nimbit::trim(line.substr(0, equals)), effect, nullptr};
    });
}

std::string FormatSearchData(const std::vector<EffectAlias>& blacklist,
                             const std::vector<EffectAlias>& aliases) {
    std::string out;
    for (const EffectAlias& entry : blacklist) {
        if (entry.effect == nullptr)
            continue;
        out += '-';
        out += entry.effect->name;
        out += '\n';
    }
    for (const EffectAlias& entry : aliases) {
        if (entry.effect == nullptr)
            continue;
        if (entry.alias != entry.effect->search_name) {
            out += entry.alias;
            out += " = ";
        }
        out += entry.effect->name;
        if (entry.override != nullptr) {
            out += " # ";
            out += entry.override->name;
        }
        out += '\n';
    }
    return out;
}

std::string FormatShortcutsData(const std::vector<EffectAlias>& shortcuts) {
    std::string out;
    for (const EffectAlias& slot : shortcuts) {
        if (slot.effect == nullptr)
            continue;
        out += slot.alias;
        out += " = ";
        out += slot.effect->name;
        out += '\n';
    }
    return out;
}

nimbit::file_path UserSettingsFolder() {
    return SettingsFolderUnder(nimbit::get_user_data_path());
}

nimbit::file_path ChooseReadFolder(std::string_view fileName) {
    const nimbit::file_path userFolder = UserSettingsFolder();
    if (!userFolder.empty() && nimbit::file_stats(userFolder.append(fileName)).exists)
        return userFolder;
    return SettingsFolderUnder(nimbit::get_common_data_path());
}

void ReadSearchDataFile(std::vector<EffectAlias>& blacklist, std::vector<EffectAlias>& aliases,
                        const std::vector<EffectData>& catalogue, const nimbit::file_path& folder) {
    blacklist.clear();
    aliases.clear();
    const std::string text = ReadTextFile(folder, SearchDataFileName);
    ParseSearchData(text, CatalogueIndex(catalogue), blacklist, aliases);
}

void ReadShortcutsDataFile(std::vector<EffectAlias>& shortcuts, const std::vector<EffectData>& catalogue,
                           const nimbit::file_path& folder) {
    const std::string text = ReadTextFile(folder, ShortcutsDataFileName);
    ParseShortcutsData(text, CatalogueIndex(catalogue), shortcuts);
}

bool WriteSearchDataFiles(const std::vector<EffectAlias>& blacklist, const std::vector<EffectAlias>& aliases,
                          const std::vector<EffectAlias>& shortcuts, const nimbit::file_path& folder) {
    if (folder.empty())
        return false;
    const std::string search = FormatSearchData(blacklist, aliases);
    const std::string slots = FormatShortcutsData(shortcuts);
    const bool searchSaved =
        nimbit::write_file_atomic(folder.append(SearchDataFileName), search.data(), search.size());
    const bool slotsSaved =
        nimbit::write_file_atomic(folder.append(ShortcutsDataFileName), slots.data(), slots.size());
    return searchSaved && slotsSaved;
}
