#pragma once

#include "nimbit/ui/check_box.h"
#include "nimbit/ui/text_label.h"
#include "nimbit/ui/window.h"
#include "popup/parts/effects_drop_down.h"
#include "popup/parts/effects_message_popup.h"

#include <string>
#include <vector>

struct PreferencesData;
struct UIColors;

// A key the custom shortcut may use: its macOS virtual key code and the name shown for it.
struct ShortcutKeyChoice {
    int code = -1;
    std::string name;
};

// The keys offered, in the order shown: letters, digits, F1-F12, then the other named keys, each
// named as the platform's keyboard layout names it.
std::vector<ShortcutKeyChoice> ShortcutKeyChoices();

// Edits the custom shortcut: the modifiers as check boxes and the key from a list by name.
class PreferencesShortcutPopup : public nimbit::ui::window {
public:
    PreferencesShortcutPopup(nimbit::ui::window* parent, nimbit::ivec2 position, const UIColors* colours,
                             const PreferencesData& current);
    ~PreferencesShortcutPopup() override;

    // Runs the modal loop; true when confirmed with a key chosen.
    bool Run();
    // Writes the modifiers (never Command), the key code and its name as shown.
    void Apply(PreferencesData& prefs) const;

    nimbit::ui::check_box& GetCtrl() { return ctrl; }
    nimbit::ui::check_box& GetOpt() { return opt; }
    nimbit::ui::check_box& GetShift() { return shift; }
    EffectsDropDown& GetKeys() { return keys; }
    EffectsMessagePopupButton& GetConfirmButton() { return confirm; }
    EffectsMessagePopupButton& GetCancelButton() { return cancel; }

private:
    nimbit::ui::check_box ctrl, opt, shift;
    EffectsDropDown keys;
    nimbit::ui::text_label note;
    EffectsMessagePopupButton confirm;
    EffectsMessagePopupButton cancel;
};
