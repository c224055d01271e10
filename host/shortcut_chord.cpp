#include "host/shortcut_chord.h"

#include "popup/preferences_data.h"

namespace {

namespace key_query = nimbit::ui::key_query;

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
    state.control = AnyDown(keys, key_query::control, key_query::left_control, key_query::right_control);
    state.option = AnyDown(keys, key_query::option, key_query::left_option, key_query::right_option);
    state.shift = AnyDown(keys, key_query::shift, key_query::left_shift, key_query::right_shift);
    state.command = AnyDown(keys, key_query::command, key_query::left_command, key_query::right_command);
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
        return key_query::space;
    case 2:
    case 3:
        return key_query::tab;
    case 4:
        return prefs.customKeyCode;
    default:
        return key_query::none;
    }
}

bool PollShortcutChord(const PreferencesData& prefs, const KeyQueries& keys) {
    if (!keys.Available())
        return false;
    const bool modifiers = ShortcutModifiersHold(prefs, ReadModifiers(keys));
    const int key = ShortcutKey(prefs);
    // An unset custom key (-1) names no key; it is never queried.
    const bool pressed = key != key_query::none && keys.wasKeyPressed(key);
    return modifiers && pressed;
}
