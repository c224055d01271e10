#pragma once

#include "host/effect_data.h"

#include <string>
#include <vector>

// The host's first-party effects as the host lists them, read from the shared fixture file at run
// time, in file order and with the hidden "_Obsolete" category left out as the catalogue does.
// Without the fixture (a clone on its own) a built-in excerpt stands in, with every name the tests
// rely on, in the same relative order.
struct FixtureEffects {
    std::vector<EffectData> effects;
    bool from_fixture = false;
};
FixtureEffects LoadFixtureEffects(bool includeHidden = false);

EffectData MakeEffect(int id, const std::string& name, const std::string& category = "Stylize");
EffectData MakePreset(int id, const std::string& name);
