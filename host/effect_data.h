#pragma once

#include <cstdint>
#include <string>

// One catalogue entry: an installed effect of the host, or an animation preset file.
struct EffectData {
    // Positive: the host's installed-effect key. Negative: minus the 1-based position of the preset's
    // file in the controller's preset path list.
    int32_t id = 0;
    std::string name;        // display name, UTF-8
    std::string search_name; // name lower-cased; what search and duplicate checks compare
    std::string category;    // host category, or "Animation Preset"
    bool is_preset = false;
};
