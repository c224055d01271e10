#pragma once

#include "nimbit/ui/generic_button.h"
#include "nimbit/ui/window.h"

#include <string>
#include <string_view>

struct UIColors;
class IconView;

// The inside of the message popups; their frame adds the platform's title bar.
inline constexpr nimbit::ivec2 MessagePopupSize{320, 90};

// A flat button of the message popups, in the theme's colours.
class EffectsMessagePopupButton : public nimbit::ui::generic_button {
public:
    explicit EffectsMessagePopupButton(UIColors const* colours);
    ~EffectsMessagePopupButton() override;
};

// A small modal question: the message, a confirming button that ends the loop with 1 and a "Cancel"
// button that ends it with 0, as does Escape. The first text is the message, the second the
// confirming button's caption.
class EffectsMessagePopup : public nimbit::ui::window {
public:
    EffectsMessagePopup(nimbit::ui::window* parent, nimbit::ivec2 const& position, UIColors const* colours,
                        std::string_view const& message, std::string_view const& caption);
    ~EffectsMessagePopup() override;

    // Runs the modal loop; 1 for the confirming button, 0 otherwise.
    int Run() { return show_modal(); }
    void Close(const nimbit::ui::event_info&) { end_modal(0); }
    void KeyDown(const nimbit::ui::event_info& e);
    void OnFocusGained(const nimbit::ui::event_info&);

    EffectsMessagePopupButton& GetConfirmButton() { return confirm; }
    EffectsMessagePopupButton& GetCancelButton() { return cancel; }

private:
    nimbit::ui::widget text;
    EffectsMessagePopupButton confirm;
    EffectsMessagePopupButton cancel;
    std::string message;
};

// A small modal notice with one button, which ends the loop with 1; Escape ends it with 0. The first
// text is the message, the second the button's caption.
class EffectsWarningPopup : public nimbit::ui::window {
public:
    EffectsWarningPopup(nimbit::ui::window* parent, nimbit::ivec2 const& position, UIColors const* colours,
                        std::string_view const& message, std::string_view const& caption);
    ~EffectsWarningPopup() override;

    int Run() { return show_modal(); }
    void KeyDown(const nimbit::ui::event_info& e);
    void OnFocusGained(const nimbit::ui::event_info&);

    EffectsMessagePopupButton& GetButton() { return button; }

private:
    void DrawText(const nimbit::ui::event_info&);

    nimbit::ui::widget text;
    EffectsMessagePopupButton button;
    std::string message;
    nimbit::vec4 fontColor{1, 1, 1, 1};
    nimbit::ui::bitmap icon;
};
