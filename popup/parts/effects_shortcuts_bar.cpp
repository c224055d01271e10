#include "popup/parts/effects_shortcuts_bar.h"

#include "nimbit/ui/control_parts.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/window.h"
#include "popup/effect_alias.h"
#include "popup/ui_colors.h"
#include "popup/user_lists.h"

#include <algorithm>

using namespace nimbit;
using namespace nimbit::ui;

EffectsShorcutButton::EffectsShorcutButton(unsigned long number) : number(number) {
    set_name("EffectsShorcutButton");
    // The application's own keys have no toolkit default; start from the dark look so that a button
    // drawn before the theme reaches it never misses a key.
    nimbit::ui::theme& t = get_theme();
    t.set(theme_keys::button_font_color, vec4{0.784f, 0.784f, 0.784f, 1});
    t.set(theme_keys::button_font_color_hover, vec4{1, 1, 1, 1});
    t.set(theme_keys::button_font_color_pressed, vec4{0.357f, 0.678f, 0.902f, 1});
    t.set(shortcuts_bar_keys::button_font_color_numbers, vec4{0.447f, 0.447f, 0.447f, 1});
    t.set(shortcuts_bar_keys::button_back_color_hover, vec4{0.216f, 0.216f, 0.216f, 1});
    auto& ev = event_manager::instance();
    add_paint_handler(*this, &EffectsShorcutButton::Draw);
    for (event_type t :
         {event_type::mouse_enter, event_type::mouse_leave, event_type::mouse_down, event_type::mouse_up})
        ev.add_event(this, this, t, &EffectsShorcutButton::OnMouse);
    ev.add_event(this, this, event_type::theme_changed, [this](const event_info&) { update(false); });
}

EffectsShorcutButton::~EffectsShorcutButton() = default;

void EffectsShorcutButton::SetLabel(std::string const& text) {
    label = text;
    update(false);
}

void EffectsShorcutButton::OnMouse(const event_info& e) {
    switch (e.type) {
    case event_type::mouse_enter:
        hovered = true;
        break;
    case event_type::mouse_leave:
        hovered = false;
        pressed = false;
        break;
    case event_type::mouse_down:
        pressed = e.data == 0;
        break;
    case event_type::mouse_up: {
        const bool click = pressed && e.data == 0;
        pressed = false;
        update(false);
        if (click)
            event_manager::instance().fire_event(this, event_type::pressed, number);
        return;
    }
    default:
        break;
    }
    update(false);
}

void EffectsShorcutButton::Draw(drawer& d, const ivec4& r) {
    const nimbit::ui::theme& t = get_theme();
    vec4 font = t.get<vec4>(theme_keys::button_font_color);
    d.set_brush_color(t.get<vec4>(theme_keys::default_back_color));
    d.draw_rect(r);
    if (hovered) {
        d.set_brush_color(t.get<vec4>(shortcuts_bar_keys::button_back_color_hover));
        d.draw_rect(r);
        font = t.get<vec4>(theme_keys::button_font_color_hover);
    }
    if (pressed)
        font = t.get<vec4>(theme_keys::button_font_color_pressed);
    d.set_text_font("Trebuchet MS", 14);
    d.set_text_format(text_align::center, text_valign::center);
    d.set_text_color(font);
    d.draw_text({0, 4, r.w, r.h - 4}, label);
    d.set_text_font("Trebuchet MS", 9);
    d.set_text_format(text_align::left, text_valign::top);
    d.set_text_color(t.get<vec4>(shortcuts_bar_keys::button_font_color_numbers));
    d.draw_text({3, 1, 12, 12}, std::to_string(number));
}

EffectsShortcutsBar::EffectsShortcutsBar() {
    set_name("EffectsShortcutsBar");
    nimbit::ui::theme& t = get_theme();
    t.set(shortcuts_bar_keys::other_border_color, vec4{0.231f, 0.231f, 0.231f, 1});
    t.set(shortcuts_bar_keys::separator_line_color, vec4{0.212f, 0.212f, 0.212f, 1});
    auto& ev = event_manager::instance();
    add_paint_handler(*this, &EffectsShortcutsBar::Draw);
    ev.add_event(this, this, event_type::theme_changed, [this](const event_info&) { update(false); });
}

EffectsShortcutsBar::~EffectsShortcutsBar() {
    for (auto& b : buttons)
        remove_child(b.get());
}

void EffectsShortcutsBar::UpdateList(std::vector<EffectAlias> const& shortcuts, UIColors const* colours) {
    for (auto& b : buttons)
        remove_child(b.get());
    buttons.clear();
    const size_t count = std::min<size_t>(shortcuts.size(), ShortcutSlotCount);
    for (size_t i = 0; i < count; ++i) {
        if (shortcuts[i].effect == nullptr)
            continue;
        const unsigned long number = static_cast<unsigned long>(i + 1);
        auto button = std::make_unique<EffectsShorcutButton>(number);
        button->create(*this, {static_cast<int>(number - 1) * ButtonPitch + 1, 1, EffectsShorcutButton::Width,
                               EffectsShorcutButton::Height});
        button->SetLabel(shortcuts[i].alias);
        if (colours != nullptr)
            SetThemeColors(button->get_theme(), *colours,
                           {{theme_keys::default_back_color, &UIColors::panelBack},
                            {theme_keys::button_font_color, &UIColors::buttonFont},
                            {theme_keys::button_font_color_hover, &UIColors::buttonFontHover},
                            {theme_keys::button_font_color_pressed, &UIColors::buttonFontPressed},
                            {shortcuts_bar_keys::button_font_color_numbers, &UIColors::buttonFontNumbers},
                            {shortcuts_bar_keys::button_back_color_hover, &UIColors::buttonBackHover}});
        button->show(true);
        add_child_event(*button, event_type::pressed, [this](const event_info& e) {
            event_manager::instance().fire_event(this, event_type::pressed, e.data);
        });
        buttons.push_back(std::move(button));
    }
    update(false);
}

void EffectsShortcutsBar::Draw(drawer& d, const ivec4& r) {
    const nimbit::ui::theme& t = get_theme();
    d.set_brush_color(t.get<vec4>(theme_keys::default_back_color));
    d.draw_rect(r);
    d.set_pen_color(t.get<vec4>(shortcuts_bar_keys::other_border_color));
    d.draw_line({0, r.h - 1}, {r.w, r.h - 1});
    d.set_pen_color(t.get<vec4>(shortcuts_bar_keys::separator_line_color));
    for (unsigned long n = 1; n < ShortcutSlotCount; ++n) {
        const int x = static_cast<int>(n) * ButtonPitch;
        d.draw_line({x, 6}, {x, r.h - 7});
    }
}
