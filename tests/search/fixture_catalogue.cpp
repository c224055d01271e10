#include "tests/search/fixture_catalogue.h"

#include "nimbit/utils/string_utils.h"
#include "popup/effect_search.h"

#include <fstream>
#include <stdexcept>

EffectData MakeEffect(int id, const std::string& name, const std::string& category,
                      const std::string& matchName) {
    EffectData effect{id, name, nimbit::string_lower(name), category, false, matchName};
    PrepareSearchNames(effect);
    return effect;
}

EffectData MakePreset(int id, const std::string& name) {
    EffectData preset{id, name, nimbit::string_lower(name), "Animation Preset", true};
    PrepareSearchNames(preset);
    return preset;
}

FixtureEffects LoadFixtureEffects(bool includeHidden) {
    FixtureEffects out;
    std::ifstream file(QUILLO_HOST_EFFECTS);
    if (!file)
        throw std::runtime_error("cannot read " QUILLO_HOST_EFFECTS);
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
        out.effects.push_back(
            MakeEffect(id++, line.substr(tab1 + 1, tab2 - tab1 - 1), category, line.substr(tab2 + 1)));
    }
    return out;
}
