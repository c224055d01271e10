#pragma once

#include "nimbit/ui/input_box.h"
#include "nimbit/ui/window.h"
#include "popup/parts/effects_message_popup.h"

#include <string>
#include <string_view>

struct UIColors;

// What the preferences' modal editors share: the theme record to use (the dark one when none is
// given), a titled window with an inside of the asked size, and the input field's colours.
const UIColors& PreferencesModalColours(const UIColors* colours);
void CreatePreferencesModal(nimbit::ui::window& w, std::string_view title, nimbit::ivec2 position,
                            nimbit::ivec2 inside, nimbit::ui::window* parent, nimbit::vec4 back);
void StylePreferencesInput(nimbit::ui::input_box& field, const UIColors& colours);
// The place of a bottom-right button of such a window, counted from the right.
nimbit::ivec4 PreferencesModalButtonRect(nimbit::ivec2 inside, int fromRight);

// Asks for one line of text (an alias or a shortcut label): an input field holding the text,
// selected, and OK / Cancel. Return or OK confirms; Escape or Cancel does not.
class PreferencesAliasPopup : public nimbit::ui::window {
public:
    PreferencesAliasPopup(nimbit::ui::window* parent, nimbit::ivec2 position, const UIColors* colours,
                          std::string_view title, std::string_view text);
    ~PreferencesAliasPopup() override;

    // Runs the modal loop; true when confirmed.
    bool Run();
    // The edited text without leading and trailing blanks; the caller decides about case.
    std::string GetAlias() const;

    nimbit::ui::input_box& GetField() { return field; }
    EffectsMessagePopupButton& GetConfirmButton() { return confirm; }
    EffectsMessagePopupButton& GetCancelButton() { return cancel; }

private:
    void KeyDown(const nimbit::ui::event_info& e);

    nimbit::ui::input_box field;
    EffectsMessagePopupButton confirm;
    EffectsMessagePopupButton cancel;
};
