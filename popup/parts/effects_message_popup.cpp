#include "popup/parts/effects_message_popup.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/theme_keys.h"
#include "popup/ui_colors.h"

using namespace nimbit;
using namespace nimbit::ui;

namespace {

constexpr unsigned long long EscapeKey = 27;
constexpr int ButtonWidth = 80, ButtonHeight = 24;

// Creates the popup with an inside of MessagePopupSize: the frame grows by whatever decoration the
// platform gives a titled window. Returns the size of the inside as the window reports it.
ivec2 CreatePopup(window& w, std::string_view title, ivec2 const& position, window* parent) {
    const ivec2 size = MessagePopupSize;
    w.create(title, {position.x, position.y, size.x, size.y}, window_style_titled, parent);
    const ivec4 frame = w.get_rect(), client = w.get_client_rect();
    w.set_rect({frame.x, frame.y, size.x + frame.w - client.w, size.y + frame.h - client.h});
    return w.get_client_rect().size();
}

// The buttons sit in the bottom right corner of the inside, right to left.
ivec4 ButtonRect(ivec2 const& inside, int fromRight) {
    return {inside.x - (fromRight + 1) * ButtonWidth - 14 - fromRight * 8, inside.y - ButtonHeight - 12,
            ButtonWidth, ButtonHeight};
}

void StyleWindow(window& w, UIColors const* colours) {
    if (colours != nullptr)
        w.get_root().set_background(colours->messageBack);
    else
        w.get_root().set_background(w.get_root().get_theme().get<vec4>(theme_keys::message_popup_back_color));
}

// The message, wrapped inside the popup's upper part, in the popup's font colour.
void DrawMessage(widget& text, std::string const& message, vec4 const& colour, bitmap const* icon) {
    window* w = text.get_window();
    if (w == nullptr)
        return;
    drawer& d = w->get_drawer();
    const ivec4& r = text.get_rect();
    int left = 0;
    if (icon != nullptr && icon->is_loaded()) {
        d.draw_image({0, 0, 32, 32}, *icon, true);
        left = 44;
    }
    d.set_text_font("Arial", 12);
    d.set_text_format(text_align::left, text_valign::center);
    d.set_text_color(colour);
    d.draw_text({left, 0, r.w - left, r.h}, message);
}

} // namespace

EffectsMessagePopupButton::EffectsMessagePopupButton(UIColors const* colours) {
    set_name("EffectsMessagePopupButton");
    if (colours == nullptr)
        return;
    nimbit::ui::theme& t = get_theme();
    t.set(theme_keys::button_color_normal, colours->messageButtonBack);
    t.set(theme_keys::button_color_hover, colours->messageButtonBackHover);
    t.set(theme_keys::button_font_color, colours->messageFont);
    t.set(theme_keys::button_border_color_hover, colours->buttonBorderHover);
    t.set(theme_keys::button_border_color_focus, colours->buttonBorderFocus);
}

EffectsMessagePopupButton::~EffectsMessagePopupButton() = default;

EffectsMessagePopup::EffectsMessagePopup(window* parent, ivec2 const& position, UIColors const* colours,
                                         MessagePopupTexts const& texts)
    : confirm(colours), cancel(colours), message(texts.message) {
    const ivec2 inside = CreatePopup(*this, texts.title, position, parent);
    StyleWindow(*this, colours);
    const vec4 font = colours != nullptr ? colours->messageFont : vec4{1, 1, 1, 1};
    text.create(get_root(), {14, 8, inside.x - 28, 40});
    text.show(true);
    auto& ev = event_manager::instance();
    ev.add_event(&text, this, event_type::draw,
                 [this, font](const event_info&) { DrawMessage(text, this->message, font, nullptr); });
    confirm.create(get_root(), ButtonRect(inside, 1));
    confirm.set_text(texts.confirm);
    confirm.show(true);
    cancel.create(get_root(), ButtonRect(inside, 0));
    cancel.set_text(texts.cancel);
    cancel.show(true);
    ev.add_event(&confirm, this, event_type::pressed, [this](const event_info&) { end_modal(1); });
    ev.add_event(&cancel, this, event_type::pressed, &EffectsMessagePopup::Close);
    ev.add_event(this, this, event_type::key_down, &EffectsMessagePopup::KeyDown);
    ev.add_event(this, this, event_type::focus_gained, &EffectsMessagePopup::OnFocusGained);
}

EffectsMessagePopup::~EffectsMessagePopup() = default;

void EffectsMessagePopup::KeyDown(const event_info& e) {
    if (e.data == EscapeKey)
        end_modal(0);
}

void EffectsMessagePopup::OnFocusGained(const event_info&) {
    set_focus(&confirm, focus_cause::keyboard);
}

EffectsWarningPopup::EffectsWarningPopup(window* parent, ivec2 const& position, UIColors const* colours,
                                         MessagePopupTexts const& texts)
    : button(colours), message(texts.message) {
    const ivec2 inside = CreatePopup(*this, texts.title, position, parent);
    StyleWindow(*this, colours);
    if (colours != nullptr) {
        fontColor = colours->messageFont;
        icon.load_image(colours->warningIcon);
    }
    text.create(get_root(), {14, 8, inside.x - 28, 40});
    text.show(true);
    auto& ev = event_manager::instance();
    ev.add_event(&text, this, event_type::draw, &EffectsWarningPopup::DrawText);
    button.create(get_root(), ButtonRect(inside, 0));
    button.set_text(texts.confirm);
    button.show(true);
    ev.add_event(&button, this, event_type::pressed, [this](const event_info&) { end_modal(1); });
    ev.add_event(this, this, event_type::key_down, &EffectsWarningPopup::KeyDown);
    ev.add_event(this, this, event_type::focus_gained, &EffectsWarningPopup::OnFocusGained);
}

EffectsWarningPopup::~EffectsWarningPopup() = default;

void EffectsWarningPopup::DrawText(const event_info&) {
    DrawMessage(text, message, fontColor, &icon);
}

void EffectsWarningPopup::KeyDown(const event_info& e) {
    if (e.data == EscapeKey)
        end_modal(0);
}

void EffectsWarningPopup::OnFocusGained(const event_info&) {
    set_focus(&button, focus_cause::keyboard);
}
