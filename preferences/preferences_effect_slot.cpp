#include "preferences/preferences_effect_slot.h"

#include "host/effect_data.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/window.h"
#include "popup/effect_alias.h"
#include "popup/ui_colors.h"
#include "preferences/preferences_effects_scroll_panel.h"

using namespace nimbit;
using namespace nimbit::ui;

namespace {

constexpr int TextGap = 6;
constexpr float FontSize = 13;
// The slot number's column on the shortcuts list.
constexpr int NumberWidth = 30;

void FillRow(drawer& d, const ivec4& r, const UIColors& c, bool hovered) {
    d.set_brush_color(hovered ? c.buttonBackHover : c.listBack);
    d.draw_rect({0, 0, r.w, r.h});
    d.set_brush_color(c.separatorLineColor);
    d.draw_rect({0, r.h - 1, r.w, 1});
    d.set_text_font("Arial", FontSize);
    d.set_text_format(text_align::left, text_valign::center);
}

void SubscribeHover(widget& w, void (*set)(widget&, bool)) {
    auto& ev = event_manager::instance();
    ev.add_event(&w, &w, event_type::mouse_enter, [&w, set](const event_info&) { set(w, true); });
    ev.add_event(&w, &w, event_type::mouse_leave, [&w, set](const event_info&) { set(w, false); });
}

} // namespace

std::vector<int> PreferencesColumnStarts(PreferencesListKind kind, int width) {
    switch (kind) {
    case PreferencesListKind::Shortcuts:
        return {NumberWidth, width * 62 / 100};
    case PreferencesListKind::Favorites:
        return {8, width * 42 / 100, width * 72 / 100};
    case PreferencesListKind::Blacklist:
        break;
    }
    return {8};
}

// --- an entry ------------------------------------------------------------------------------------

PreferencesEffectSlot::PreferencesEffectSlot(PreferencesEffectsScrollPanel& panel,
                                             std::vector<EffectAlias>& list, size_t index)
    : panel(panel), list(list), index(index) {
    set_name("PreferencesEffectSlot");
    auto& ev = event_manager::instance();
    ev.add_event(this, this, event_type::draw, &PreferencesEffectSlot::Draw);
    for (event_type t :
         {event_type::mouse_down, event_type::mouse_move, event_type::mouse_up, event_type::key_down})
        ev.add_event(this, this, t, &PreferencesEffectSlot::Mouse);
    SubscribeHover(*this, [](widget& w, bool on) { static_cast<PreferencesEffectSlot&>(w).SetHover(on); });
}

PreferencesEffectSlot::~PreferencesEffectSlot() = default;

EffectAlias& PreferencesEffectSlot::GetEntry() {
    return list[index];
}

PreferencesListKind PreferencesEffectSlot::GetKind() const {
    return panel.GetKind();
}

std::vector<std::string> PreferencesEffectSlot::ColumnTexts() {
    const EffectAlias& e = GetEntry();
    const std::string name = e.effect != nullptr ? e.effect->name : std::string();
    switch (GetKind()) {
    case PreferencesListKind::Shortcuts:
        return {e.effect != nullptr ? name : "Empty Slot", e.alias};
    case PreferencesListKind::Favorites: {
        // An alias equal to the search name is no alias of the user's: nothing to show.
        const bool ownAlias = e.effect == nullptr || e.alias != e.effect->search_name;
        return {name, e.override != nullptr ? e.override->name : std::string(),
                ownAlias ? e.alias : std::string()};
    }
    case PreferencesListKind::Blacklist:
        break;
    }
    return {e.effect != nullptr ? name : e.alias};
}

void PreferencesEffectSlot::SetColours(const UIColors* c) {
    colours = c;
    update(false);
}

void PreferencesEffectSlot::SetHover(bool on) {
    if (hovered == on)
        return;
    hovered = on;
    update(false);
}

void PreferencesEffectSlot::Draw(const event_info&) {
    window* w = get_window();
    if (w == nullptr || colours == nullptr || index >= list.size())
        return; // a list changed without a Refresh yet
    drawer& d = w->get_drawer();
    const ivec4& r = get_rect();
    FillRow(d, r, *colours, hovered);
    const bool shortcuts = GetKind() == PreferencesListKind::Shortcuts;
    const bool empty = GetEntry().effect == nullptr;
    if (shortcuts) {
        d.set_text_color(colours->buttonFontNumbers);
        d.draw_text({TextGap + 2, 0, NumberWidth - TextGap, r.h}, std::to_string(index + 1));
    }
    const std::vector<int> starts = PreferencesColumnStarts(GetKind(), r.w);
    const std::vector<std::string> texts = ColumnTexts();
    for (size_t i = 0; i < texts.size() && i < starts.size(); ++i) {
        if (texts[i].empty())
            continue;
        const int right = i + 1 < starts.size() ? starts[i + 1] : r.w;
        d.set_text_color(shortcuts && empty && i == 0 ? colours->rowSecondText : colours->rowText);
        d.draw_text({starts[i], 0, right - starts[i] - TextGap, r.h}, texts[i]);
    }
}

void PreferencesEffectSlot::Mouse(const event_info& e) {
    panel.RowInput(*this, e); // may destroy this row: nothing may follow
}

// --- the "New" row -------------------------------------------------------------------------------

PreferencesEffectNew::PreferencesEffectNew(PreferencesEffectsScrollPanel& panel) : panel(panel) {
    set_name("PreferencesEffectNew");
    auto& ev = event_manager::instance();
    ev.add_event(this, this, event_type::draw, &PreferencesEffectNew::Draw);
    ev.add_event(this, this, event_type::mouse_up,
                 [this](const event_info& e) { this->panel.NewRowInput(*this, e); });
    SubscribeHover(*this, [](widget& w, bool on) { static_cast<PreferencesEffectNew&>(w).SetHover(on); });
}

PreferencesEffectNew::~PreferencesEffectNew() = default;

PreferencesListKind PreferencesEffectNew::GetKind() const {
    return panel.GetKind();
}

std::string_view PreferencesEffectNew::GetText() const {
    switch (GetKind()) {
    case PreferencesListKind::Shortcuts:
        return "New +";
    case PreferencesListKind::Favorites:
        return "New Override +";
    case PreferencesListKind::Blacklist:
        break;
    }
    return "New Alias +";
}

void PreferencesEffectNew::SetColours(const UIColors* c) {
    colours = c;
    update(false);
}

void PreferencesEffectNew::SetHover(bool on) {
    if (hovered == on)
        return;
    hovered = on;
    update(false);
}

void PreferencesEffectNew::Draw(const event_info&) {
    window* w = get_window();
    if (w == nullptr || colours == nullptr)
        return;
    drawer& d = w->get_drawer();
    const ivec4& r = get_rect();
    FillRow(d, r, *colours, hovered);
    d.set_text_color(hovered ? colours->rowText : colours->rowSecondText);
    const int left = PreferencesColumnStarts(GetKind(), r.w).front();
    d.draw_text({left, 0, r.w - left - TextGap, r.h}, GetText());
}
