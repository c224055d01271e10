#include "host/shortcut_chord.h"

#include "popup/preferences_data.h"

namespace {

KeyQueries installedQueries;

bool AnyDown(const KeyQueries& keys, int both, int left, int right) {
    return keys.isKeyDown(both) || keys.isKeyDown(left) || keys.isKeyDown(right);
}

} // namespace

void SetKeyQueries(KeyQueries queries) {
    installedQueries = queries;
}

KeyQueries GetKeyQueries() {
    return installedQueries;
}

ModifierState ReadModifiers(const KeyQueries& keys) {
    ModifierState state;
    if (!keys.Available())
        return state;
    state.control = AnyDown(keys, ChordKey::Control, ChordKey::LeftControl, ChordKey::RightControl);
    state.option = AnyDown(keys, ChordKey::Option, ChordKey::LeftOption, ChordKey::RightOption);
    state.shift = AnyDown(keys, ChordKey::Shift, ChordKey::LeftShift, ChordKey::RightShift);
    state.command = AnyDown(keys, ChordKey::Command, ChordKey::LeftCommand, ChordKey::RightCommand);
    return state;
}

bool ShortcutModifiersHold(const PreferencesData& prefs, const ModifierState& m) {
    switch (prefs.shortcutChoice) {
    case 0:
    case 2:
        return m.control;
    case 1:
    case 3:
        return m.shift;
    case 4:
        return m.control == (prefs.customCtrl != 0) && m.option == (prefs.customOpt != 0) &&
               m.shift == (prefs.customShift != 0) && m.command == (prefs.customCmd != 0);
    default:
        return false;
    }
}

int ShortcutKey(const PreferencesData& prefs) {
    switch (prefs.shortcutChoice) {
    case 0:
    case 1:
        return ChordKey::Space;
    case 2:
    case 3:
        return ChordKey::Tab;
    case 4:
        return prefs.customKeyCode;
    default:
        return ChordKey::None;
    }
}

bool PollShortcutChord(const PreferencesData& prefs, const KeyQueries& keys) {
    if (!keys.Available())
        return false;
    const bool modifiers = ShortcutModifiersHold(prefs, ReadModifiers(keys));
    const int key = ShortcutKey(prefs);
    // An unset custom key (-1) names no key; it is never queried.
    const bool pressed = key != ChordKey::None && keys.wasKeyPressed(key);
    return modifiers && pressed;
}
