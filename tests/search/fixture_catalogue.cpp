#include "tests/search/fixture_catalogue.h"

#include "nimbit/utils/string_utils.h"

#include <fstream>
#include <string_view>

namespace {

const char* const BuiltInEffects[][2] = {
    {"3D Channel", "3D Channel Extract"},
    {"Blur & Sharpen", "Bilateral Blur"},
    {"Blur & Sharpen", "CC Radial Blur"},
    {"Blur & Sharpen", "CC Radial Fast Blur"},
    {"Blur & Sharpen", "Channel Blur"},
    {"Blur & Sharpen", "Directional Blur"},
    {"Blur & Sharpen", "Fast Box Blur"},
    {"Blur & Sharpen", "Gaussian Blur"},
    {"Blur & Sharpen", "Radial Blur"},
    {"Blur & Sharpen", "Sharpen"},
    {"Blur & Sharpen", "Unsharp Mask"},
    {"Color Correction", "Levels"},
    {"Color Correction", "Tint"},
    {"Distort", "Bulge"},
    {"Generate", "Fill"},
    {"Obsolete", "Fast Blur (Legacy)"},
    {"Obsolete", "Gaussian Blur (Legacy)"},
    {"Stylize", "Glow"},
    {"Time", "Echo"},
    {"Time", "Pixel Motion Blur"},
    {"Transition", "Linear Wipe"},
};

} // namespace

EffectData MakeEffect(int id, const std::string& name, const std::string& category) {
    return EffectData{id, name, nimbit::string_lower(name), category, false};
}

EffectData MakePreset(int id, const std::string& name) {
    return EffectData{id, name, nimbit::string_lower(name), "Animation Preset", true};
}

FixtureEffects LoadFixtureEffects(bool includeHidden) {
    FixtureEffects out;
    std::ifstream file(QUILLO_SHARED_DIR "/fixtures/host-effects.tsv");
    std::string line;
    int id = 1;
    while (file && std::getline(file, line)) {
        if (line.empty() || line[0] == '#')
            continue;
        const size_t tab1 = line.find('\t');
        const size_t tab2 = tab1 == std::string::npos ? tab1 : line.find('\t', tab1 + 1);
        if (tab2 == std::string::npos)
            continue;
        const std::string category = line.substr(0, tab1);
        if (category == "_Obsolete" && !includeHidden)
            continue;
        out.effects.push_back(MakeEffect(id++, line.substr(tab1 + 1, tab2 - tab1 - 1), category));
    }
    out.from_fixture = !out.effects.empty();
    if (!out.from_fixture)
        for (const auto& [category, name] : BuiltInEffects)
            out.effects.push_back(MakeEffect(id++, name, category));
    return out;
}
