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
    // Filled once when the catalogue is collected (PrepareSearchNames), never per keystroke:
    std::string match_name{};  // the host's language-independent name; empty for presets
    std::string match_words{}; // match_name as lower-case words: "ADBE Gaussian Blur 2" -> "gaussian blur"
    std::string folded_name{}; // name lower-cased in every script the search knows
    std::string plain_name{};  // folded_name without diacritics, for the accent-insensitive search
};
