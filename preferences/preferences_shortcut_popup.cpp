#include "preferences/preferences_shortcut_popup.h"

#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/theme_keys.h"
#include "popup/preferences_data.h"
#include "popup/ui_colors.h"
#include "preferences/preferences_alias_popup.h"

using namespace nimbit;
using namespace nimbit::ui;

namespace {

constexpr ivec2 ShortcutPopupSize{320, 150};

struct KeyEntry {
    int code;
    const char* name; // used when the platform names the key with nothing printable
};

// clang-format off
constexpr KeyEntry OfferedKeys[] = {
    {0, "A"}, {11, "B"}, {8, "C"}, {2, "D"}, {14, "E"}, {3, "F"}, {5, "G"}, {4, "H"}, {34, "I"},
    {38, "J"}, {40, "K"}, {37, "L"}, {46, "M"}, {45, "N"}, {31, "O"}, {35, "P"}, {12, "Q"}, {15, "R"},
    {1, "S"}, {17, "T"}, {32, "U"}, {9, "V"}, {13, "W"}, {7, "X"}, {16, "Y"}, {6, "Z"},
    {29, "0"}, {18, "1"}, {19, "2"}, {20, "3"}, {21, "4"}, {23, "5"}, {22, "6"}, {26, "7"}, {28, "8"}, {25, "9"},
    {122, "F1"}, {120, "F2"}, {99, "F3"}, {118, "F4"}, {96, "F5"}, {97, "F6"}, {98, "F7"}, {100, "F8"},
    {101, "F9"}, {109, "F10"}, {103, "F11"}, {111, "F12"},
    {49, "Space"}, {48, "Tab"}, {36, "Return"}, {51, "Delete"}, {117, "Forward Delete"},
    {115, "Home"}, {119, "End"}, {116, "Page Up"}, {121, "Page Down"},
    {123, "Left"}, {124, "Right"}, {126, "Up"}, {125, "Down"},
};
// clang-format on

void StyleCheckBox(check_box& box, std::string_view text, const UIColors& c) {
    box.set_text(text);
    box.set_type(check_box_type::square, 14);
    nimbit::ui::theme& t = box.get_theme();
    t.set(theme_keys::checkbox_font_color, c.checkBoxFont);
    t.set(theme_keys::checkbox_font_name, std::string("Arial"));
    t.set(theme_keys::checkbox_image, c.checkBox);
}

} // namespace

std::vector<ShortcutKeyChoice> ShortcutKeyChoices() {
    std::vector<ShortcutKeyChoice> choices;
    for (const KeyEntry& k : OfferedKeys) {
        std::string name = keyboard::get_key_name(k.code);
        // Layouts may answer a control character for keys such as Home; those read as nothing.
        if (name.empty() || static_cast<unsigned char>(name[0]) < 0x20 || name == "\x7f")
            name = k.name;
        choices.push_back({k.code, std::move(name)});
    }
    return choices;
}

PreferencesShortcutPopup::PreferencesShortcutPopup(window* parent, ivec2 position, const UIColors* colours,
                                                   const PreferencesData& current)
    : confirm(&PreferencesModalColours(colours)), cancel(&PreferencesModalColours(colours)) {
    const UIColors& c = PreferencesModalColours(colours);
    CreatePreferencesModal(*this, "Custom Shortcut Key", position, ShortcutPopupSize, parent, c.messageBack);
    const ivec2 inside = get_client_rect().size();
    widget& root = get_root();

    struct Modifier {
        check_box& box;
        const char* text;
        int32_t on;
        int x, w;
    };
    for (const Modifier& m : {Modifier{ctrl, "CTRL +", current.customCtrl, 14, 76},
                              Modifier{opt, "OPT +", current.customOpt, 96, 70},
                              Modifier{shift, "SHIFT +", current.customShift, 172, 84}}) {
        m.box.create(root, {m.x, 14, m.w, 20});
        StyleCheckBox(m.box, m.text, c);
        m.box.set_selected(m.on != 0);
        m.box.show(true);
    }

    keys.create(root, {14, 44, inside.x - 28, 24});
    keys.SwitchTheme(&c);
    for (const ShortcutKeyChoice& k : ShortcutKeyChoices())
        keys.add_item(static_cast<uint32_t>(k.code), k.name);
    // A key set elsewhere (an imported file) that the list does not offer still shows as chosen.
    const auto code = static_cast<uint32_t>(current.customKeyCode);
    if (current.customKeyCode >= 0 && !keys.set_selected_item(code)) {
        const std::string name = keyboard::get_key_name(current.customKeyCode);
        keys.add_item(code, name.empty() ? current.customKeyName : name);
        keys.set_selected_item(code);
    }
    keys.show(true);

    note.create(root, {14, 76, inside.x - 28, 20});
    nimbit::ui::theme& t = note.get_theme();
    t.set(theme_keys::label_font_color, c.messageFont);
    t.set(theme_keys::label_font_name, std::string("Arial"));
    t.set(theme_keys::label_font_size, 11.0f);
    note.set_text("Note: Some shortcuts may conflict with your life.");
    note.show(true);

    confirm.create(root, PreferencesModalButtonRect(inside, 1));
    confirm.set_text("OK");
    confirm.show(true);
    cancel.create(root, PreferencesModalButtonRect(inside, 0));
    cancel.set_text("Cancel");
    cancel.show(true);

    set_tab_navigation(true);
    auto& ev = event_manager::instance();
    ev.add_event(&confirm, this, event_type::pressed, [this](const event_info&) {
        // Without a key there is no shortcut to confirm.
        if (keys.get_selected_item() >= 0)
            end_modal(1);
    });
    ev.add_event(&cancel, this, event_type::pressed, [this](const event_info&) { end_modal(0); });
    ev.add_event(this, this, event_type::key_down, [this](const event_info& e) {
        if (e.data == event_key::escape)
            end_modal(0);
    });
    ev.add_event(this, this, event_type::focus_gained, [this](const event_info&) {
        if (get_focus() == nullptr || get_focus() == &get_root())
            confirm.focus(focus_cause::keyboard);
    });
}

PreferencesShortcutPopup::~PreferencesShortcutPopup() = default;

bool PreferencesShortcutPopup::Run() {
    return show_modal() == 1;
}

void PreferencesShortcutPopup::Apply(PreferencesData& prefs) const {
    prefs.customCtrl = ctrl.is_selected() ? 1 : 0;
    prefs.customOpt = opt.is_selected() ? 1 : 0;
    prefs.customShift = shift.is_selected() ? 1 : 0;
    prefs.customCmd = 0;
    if (keys.get_selected_item() >= 0) {
        prefs.customKeyCode = static_cast<int32_t>(keys.get_selected_id());
        prefs.customKeyName = keys.get_selected_text();
    } else {
        prefs.customKeyCode = -1;
        prefs.customKeyName.clear();
    }
}
