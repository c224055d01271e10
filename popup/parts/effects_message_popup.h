#pragma once

#include "nimbit/ui/generic_button.h"
#include "nimbit/ui/window.h"

#include <string>

struct UIColors;
class IconView;

// The inside of the message popups; their frame adds the platform's title bar.
inline constexpr nimbit::ivec2 MessagePopupSize{320, 90};

// What a message popup says: the window title, the message, and the captions of its confirming and
// cancelling buttons (a notice has only the first).
struct MessagePopupTexts {
    std::string title;
    std::string message;
    std::string confirm = "OK";
    std::string cancel = "Cancel";
};

// A flat button of the message popups, in the theme's colours.
class EffectsMessagePopupButton : public nimbit::ui::generic_button {
public:
    explicit EffectsMessagePopupButton(UIColors const* colours);
    ~EffectsMessagePopupButton() override;
};

// A small modal question under its title: the message, a confirming button that ends the loop with 1
// and a cancelling one that ends it with 0, as does Escape.
class EffectsMessagePopup : public nimbit::ui::window {
public:
    EffectsMessagePopup(nimbit::ui::window* parent, nimbit::ivec2 const& position, UIColors const* colours,
                        MessagePopupTexts const& texts);
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

// A small modal notice under its title: the message and one button (captioned with the confirming
// text), which ends the loop with 1; Escape ends it with 0.
class EffectsWarningPopup : public nimbit::ui::window {
public:
    EffectsWarningPopup(nimbit::ui::window* parent, nimbit::ivec2 const& position, UIColors const* colours,
                        MessagePopupTexts const& texts);
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
