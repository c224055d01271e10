#include "preferences/preferences_alias_popup.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/theme_keys.h"
#include "popup/ui_colors.h"

#include <vector>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

constexpr ivec2 AliasPopupSize{320, 90};
constexpr int ButtonWidth = 80, ButtonHeight = 24;

} // namespace

const UIColors& PreferencesModalColours(const UIColors* colours) {
    if (colours != nullptr)
        return *colours;
    static const std::vector<UIColors> themes = BuildColorThemes();
    return themes.front();
}

void CreatePreferencesModal(window& w, std::string_view title, ivec2 position, ivec2 inside, window* parent,
                            vec4 back) {
    w.create(title, {position.x, position.y, inside.x, inside.y}, window_style_titled, parent);
    // The frame grows by whatever decoration the platform gives a titled window.
    const ivec4 frame = w.get_rect(), client = w.get_client_rect();
    w.set_rect({frame.x, frame.y, inside.x + frame.w - client.w, inside.y + frame.h - client.h});
    widget& root = w.get_root();
    root.set_background(back);
    // The root is a plain widget: it paints nothing of its own.
    event_manager::instance().add_event(&root, &w, event_type::draw, [&w](const event_info&) {
        drawer& d = w.get_drawer();
        const ivec4& r = w.get_root().get_rect();
        d.set_brush_color(w.get_root().get_theme().get<vec4>(theme_keys::default_back_color));
        d.draw_rect({0, 0, r.w, r.h});
    });
}

void StylePreferencesInput(input_box& field, const UIColors& c) {
    field.set_background(c.inputBack);
    nimbit::ui::theme& t = field.get_theme();
    t.set(theme_keys::input_border_color, c.inputBorder);
    t.set(theme_keys::input_font_color, c.inputFont);
    t.set(theme_keys::input_font_default_text_color, c.inputDefaultText);
    t.set(theme_keys::input_selection_color, c.inputSelection);
}

ivec4 PreferencesModalButtonRect(ivec2 inside, int fromRight) {
    return {inside.x - (fromRight + 1) * ButtonWidth - 14 - fromRight * 8, inside.y - ButtonHeight - 12,
            ButtonWidth, ButtonHeight};
}

PreferencesAliasPopup::PreferencesAliasPopup(window* parent, ivec2 position, const UIColors* colours,
                                             std::string_view title, std::string_view text)
    : confirm(&PreferencesModalColours(colours)), cancel(&PreferencesModalColours(colours)) {
    const UIColors& c = PreferencesModalColours(colours);
    CreatePreferencesModal(*this, title, position, AliasPopupSize, parent, c.messageBack);
    const ivec2 inside = get_client_rect().size();
    field.create(get_root(), {14, 14, inside.x - 28, 24});
    StylePreferencesInput(field, c);
    field.set_text(text);
    field.show(true);
    confirm.create(get_root(), PreferencesModalButtonRect(inside, 1));
    confirm.set_text("OK");
    confirm.show(true);
    cancel.create(get_root(), PreferencesModalButtonRect(inside, 0));
    cancel.set_text("Cancel");
    cancel.show(true);

    set_tab_navigation(true);
    auto& ev = event_manager::instance();
    // Return in the field confirms; the buttons answer Return themselves when they hold the focus.
    ev.add_event(&field, this, event_type::pressed, [this](const event_info&) { end_modal(1); });
    ev.add_event(&confirm, this, event_type::pressed, [this](const event_info&) { end_modal(1); });
    ev.add_event(&cancel, this, event_type::pressed, [this](const event_info&) { end_modal(0); });
    ev.add_event(this, this, event_type::key_down, &PreferencesAliasPopup::KeyDown);
    ev.add_event(this, this, event_type::focus_gained,
                 [this](const event_info&) { field.focus(focus_cause::keyboard); });
}

PreferencesAliasPopup::~PreferencesAliasPopup() = default;

bool PreferencesAliasPopup::Run() {
    field.focus(focus_cause::keyboard);
    field.select_whole_text();
    return show_modal() == 1;
}

std::string PreferencesAliasPopup::GetAlias() const {
    const std::string text = field.get_text();
    constexpr std::string_view blanks = " \t\r\n";
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

void PreferencesAliasPopup::KeyDown(const event_info& e) {
    if (e.data == event_key::escape)
        end_modal(0);
}
