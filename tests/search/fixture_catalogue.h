#pragma once

#include "host/effect_data.h"

#include <string>
#include <vector>

// The host's first-party effects as the host lists them, read from tests/data/host-effects.tsv at
// run time, in file order and with the hidden "_Obsolete" category left out as the catalogue does
// (unless includeHidden). Throws when the file cannot be read.
struct FixtureEffects {
    std::vector<EffectData> effects;
};
FixtureEffects LoadFixtureEffects(bool includeHidden = false);

// Search names prepared as the catalogue prepares them.
EffectData MakeEffect(int id, const std::string& name, const std::string& category = "Stylize",
                      const std::string& matchName = "");
EffectData MakePreset(int id, const std::string& name);
