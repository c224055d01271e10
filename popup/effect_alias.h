#pragma once

#include <string>

struct EffectData;

// One entry of the user's lists: a blacklist entry, a favorite or alias, or a shortcut slot.
// The pointers lead into the catalogue and do not own it; the lists are read again whenever the
// catalogue is rebuilt.
struct EffectAlias {
    // Alias: the word the user types (lower case). Favorite or blacklist entry: the effect's search
    // name. Shortcut slot: the label on the numbered button.
    std::string alias;
    const EffectData* effect = nullptr;   // null marks an empty shortcut slot
    const EffectData* override = nullptr; // when set, applying effect applies this one instead
};
