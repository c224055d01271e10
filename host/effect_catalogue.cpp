#include "host/aegp_suite_handler.h"
#include "host/effects_popup.h"
#include "host/host_platform.h"
#include "nimbit/filesystem/folder_iterator.h"
#include "nimbit/filesystem/known_folders.h"
#include "nimbit/utils/string_utils.h"
#include "popup/effect_search.h"

#include <cstring>

namespace {

constexpr std::string_view PresetCategory = "Animation Preset";

} // namespace

nimbit::file_path EffectsPopup::GetAEPresetsPath() const {
    nimbit::file_path folder(HostPlatform::ExecutablePath());
    for (int i = 0; i < HostPlatform::PresetsFolderLevels(); ++i)
        folder = folder.stem();
    return folder.append("Presets");
}

nimbit::file_path EffectsPopup::GetUserPresetsPath() const {
    nimbit::file_path folder = nimbit::get_docs_data_path().append("Adobe");
    if (const char* name = AeVersionFolderName(version)) {
        folder = folder.append(name);
    } else {
        // A host newer than the table: the folder name is that of the executable's folder's folder,
        // "Adobe " dropped. On Windows that is the installation ("Adobe After Effects 2030" holding
        // "Support Files"). In the Mac's bundle it is "Contents", one level too few, which names a
        // folder that does not exist, so such hosts show no user presets there; kept as it is,
        // since users' folders of those versions were never read.
        const std::string leaf = nimbit::file_path(HostPlatform::ExecutablePath()).stem().stem().leaf(true);
        folder = folder.append(leaf.size() >= 6 ? leaf.substr(6) : std::string());
    }
    return folder.append("User Presets");
}

void EffectsPopup::CollectPresets(const nimbit::file_path& folder, std::vector<EffectData>& catalogue) {
    for (const nimbit::folder_entry& entry : nimbit::folder_enumerator{folder, true}) {
        if (entry.is_folder)
            continue;
        // The host's preset extension, exactly: "Glow.FFX" is not a preset to the host either.
        if (entry.path.extension() != "ffx")
            continue;
        EffectData record;
        record.name = entry.path.leaf(false);
        record.search_name = nimbit::string_lower(record.name);
        PrepareSearchNames(record);
        presetPaths.push_back(entry.path.to_string());
        record.id = -static_cast<int32_t>(presetPaths.size());
        record.category = PresetCategory;
        record.is_preset = true;
        catalogue.push_back(std::move(record));
    }
}

std::vector<EffectData> EffectsPopup::CollectEffectList() {
    std::vector<EffectData> catalogue;
    AEGP_SuiteHandler suites(basic);
    AEGP_EffectSuite3* effects = suites.EffectSuite3();
    A_long count = 0;
    if (effects != nullptr)
        effects->AEGP_GetNumInstalledEffects(&count);
    if (count > 0)
        catalogue.reserve(static_cast<size_t>(count));

    CollectPresets(GetAEPresetsPath(), catalogue);

    AEGP_InstalledEffectKey key = 0;
    for (A_long i = 0; effects != nullptr && i < count; ++i) {
        AEGP_InstalledEffectKey next = 0;
        effects->AEGP_GetNextInstalledEffect(key, &next);
        key = next;
        char name[AEGP_MAX_EFFECT_NAME_SIZE] = {};
        char category[AEGP_MAX_EFFECT_CATEGORY_NAME_SIZE] = {};
        char matchName[AEGP_MAX_EFFECT_MATCH_NAME_SIZE] = {};
        effects->AEGP_GetEffectName(key, name);
        effects->AEGP_GetEffectCategory(key, category);

        EffectData record;
        record.category.assign(category, strnlen(category, sizeof category));
        if (record.category == "_Obsolete")
            continue;
        record.name = nimbit::macroman_to_utf8(std::string_view(name, strnlen(name, sizeof name)));
        record.search_name = nimbit::string_lower(record.name);
        if (record.category.empty()) {
            // A preset the host lists as an effect: the preset file, when found, already stands for it.
            record.category = PresetCategory;
            record.is_preset = true;
            bool listed = false;
            for (const EffectData& other : catalogue) {
                if (other.is_preset && other.search_name == record.search_name) {
                    listed = true;
                    break;
                }
            }
            if (listed)
                continue;
        }
        // Language-independent, so an artist can find an effect by its English name on any host.
        effects->AEGP_GetEffectMatchName(key, matchName);
        record.match_name =
            nimbit::macroman_to_utf8(std::string_view(matchName, strnlen(matchName, sizeof matchName)));
        PrepareSearchNames(record);
        record.id = key;
        catalogue.push_back(std::move(record));
    }

    CollectPresets(GetUserPresetsPath(), catalogue);
    return catalogue;
}
