// The simulated host's effect suite: the installed effects and the effects applied to layers.

#include "hostsim/sim_host.h"
#include "hostsim/sim_suites.h"
#include "hostsim/suite_calls.h"

namespace hostsim {

namespace {

// What an effect handle given to the plug-in names.
struct EffectRef {
    Layer* layer;
    AEGP_InstalledEffectKey key;
};

} // namespace

// ---- Effect

A_Err GetLayerNumEffects(AEGP_LayerH handle, A_long* count) {
    return Answer(LayerOf(handle), [&](Layer& layer) { *count = static_cast<A_long>(layer.effects.size()); });
}

A_Err DisposeEffect(AEGP_EffectRefH effect) {
    return Dispose<EffectRef>(effect, Host().liveEffectRefs);
}

A_Err ApplyEffect(AEGP_PluginID, AEGP_LayerH handle, AEGP_InstalledEffectKey key, AEGP_EffectRefH* effect) {
    Layer* layer = LayerOf(handle);
    if (layer == nullptr || Host().FindEffect(key) == nullptr)
        return A_Err_PARAMETER;
    layer->effects.push_back(key);
    ++Host().suiteApplications;
    ++Host().liveEffectRefs;
    *effect = reinterpret_cast<AEGP_EffectRefH>(new EffectRef{layer, key});
    return A_Err_NONE;
}

A_Err GetNumInstalledEffects(A_long* count) {
    *count = static_cast<A_long>(Host().GetModel().effects.size());
    return A_Err_NONE;
}

A_Err GetNextInstalledEffect(AEGP_InstalledEffectKey key, AEGP_InstalledEffectKey* next) {
    const auto& effects = Host().GetModel().effects;
    if (key == 0) {
        *next = effects.empty() ? 0 : effects.front().key;
        return A_Err_NONE;
    }
    for (size_t i = 0; i < effects.size(); ++i) {
        if (effects[i].key == key) {
            *next = i + 1 < effects.size() ? effects[i + 1].key : 0;
            return A_Err_NONE;
        }
    }
    return A_Err_PARAMETER;
}

A_Err GetEffectName(AEGP_InstalledEffectKey key, A_char* name) {
    ++Host().effectNamesRead;
    return Answer(Host().FindEffect(key), [&](const Effect& effect) {
        CopyName(Utf8ToMacRoman(effect.name), name, AEGP_MAX_EFFECT_NAME_SIZE);
    });
}

A_Err GetEffectMatchName(AEGP_InstalledEffectKey key, A_char* name) {
    return Answer(Host().FindEffect(key), [&](const Effect& effect) {
        CopyName(effect.matchName, name, AEGP_MAX_EFFECT_MATCH_NAME_SIZE);
    });
}

A_Err GetEffectCategory(AEGP_InstalledEffectKey key, A_char* category) {
    return Answer(Host().FindEffect(key), [&](const Effect& effect) {
        CopyName(effect.category, category, AEGP_MAX_EFFECT_CATEGORY_NAME_SIZE);
    });
}

} // namespace hostsim
