#pragma once

// The global shortcut: the key chord, chosen in the settings, that opens and closes the popup. The
// idle hook polls it through key queries that the toolkit provides; the host side itself reads no
// keys, so it builds and runs without the toolkit.

#include "nimbit/ui/key_codes.h"

struct PreferencesData;

struct KeyQueries {
    bool (*isKeyDown)(int key) = nullptr;
    // True once per press: down now and not at the previous query of the same key.
    bool (*wasKeyPressed)(int key) = nullptr;

    bool Available() const { return isKeyDown != nullptr && wasKeyPressed != nullptr; }
};

// Installed by whoever links the toolkit; until then the chord is never seen.
void SetKeyQueries(KeyQueries queries);
KeyQueries GetKeyQueries();

struct ModifierState {
    bool control = false, option = false, shift = false, command = false;
};

// Each modifier counts as down when its left, right or either-side key does.
ModifierState ReadModifiers(const KeyQueries& keys);

// Whether the modifiers satisfy the settings' shortcut choice: Control for "Ctrl + Space" and
// "Ctrl + Tab", Shift for "Shift + Space" and "Shift + Tab" (the other modifiers are not looked at),
// and for "Custom" each of the four exactly as its flag says. An unknown choice never holds.
bool ShortcutModifiersHold(const PreferencesData& prefs, const ModifierState& modifiers);

// The key of the shortcut choice: Space, Tab or the custom key code; nimbit::ui::key_query::none
// for an unknown choice.
int ShortcutKey(const PreferencesData& prefs);

// One poll of the chord: reads the modifiers, then asks whether the choice's key was pressed (only
// that key, so that a press of another key is left for its own query). True when both hold.
bool PollShortcutChord(const PreferencesData& prefs, const KeyQueries& keys);
