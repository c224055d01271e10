#include "popup/parts/effect_slot.h"

#include "host/effect_data.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/popup_menu.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/window.h"
#include "popup/parts/effects_popup_interface.h"
#include "popup/ui_colors.h"
#include "popup/user_lists.h"

#include <algorithm>

using namespace nimbit;
using namespace nimbit::ui;

EffectSlot::EffectSlot(EffectsPopupInterface& popup, bool contextMenuAllowed)
    : popup(popup), contextMenuAllowed(contextMenuAllowed) {
    set_name("EffectSlot");
    auto& ev = event_manager::instance();
    ev.add_event(this, this, event_type::draw, &EffectSlot::Draw);
    ev.add_event(this, this, event_type::mouse_enter, &EffectSlot::MouseEnter);
    ev.add_event(this, this, event_type::mouse_leave, &EffectSlot::MouseLeave);
    ev.add_event(this, this, event_type::mouse_up, &EffectSlot::MouseUp);
    ev.add_event(this, this, event_type::key_down, &EffectSlot::KeyDown);
}

EffectSlot::~EffectSlot() = default;

void EffectSlot::SetEffect(const EffectData* entry, bool fromUserList,
                           const std::vector<std::string>* labels) {
    effect = entry;
    userEntry = fromUserList;
    shortcutLabels = labels;
}

void EffectSlot::SetTextColor(const vec4& normal, const vec4& second, const vec4& match) {
    textColor = normal;
    secondColor = second;
    matchColor = match;
    update(false);
}

void EffectSlot::SetSelected(bool on) {
    if (selected == on)
        return;
    selected = on;
    update(false);
}

void EffectSlot::SetHover(bool on) {
    if (hovered == on)
        return;
    hovered = on;
    update(false);
}

vec4 EffectSlot::BackgroundColor() const {
    if (selected || hovered)
        return effect != nullptr && effect->is_preset ? PresetHighlightColor : EffectHighlightColor;
    return get_theme().get<vec4>(theme_keys::default_back_color);
}

void EffectSlot::Draw(const event_info&) {
    window* w = get_window();
    if (w == nullptr)
        return;
    drawer& d = w->get_drawer();
    const ivec4& r = get_rect();
    d.set_brush_color(BackgroundColor());
    d.draw_rect({0, 0, r.w, r.h});
    if (effect == nullptr)
        return;
    const bool lit = selected || hovered;
    d.set_text_font("Arial", 14);
    d.set_text_format(text_align::left, text_valign::center);
    const ivec4 textRect{TextLeft, 2, r.w - 4 - TextLeft, r.h - 4 - 2};
    DrawName(d, textRect, lit);
    // The host category, quietly on the right: it tells two entries of the same name apart.
    if (!effect->category.empty() && r.w > 260) {
        d.set_text_font("Arial", 10);
        d.set_text_format(text_align::right, text_valign::center);
        d.set_text_color(lit ? vec4{1, 1, 1, 0.75f} : secondColor);
        d.draw_text({r.w / 2, 2, r.w / 2 - 8, r.h - 4 - 2}, effect->category);
    }
}

void EffectSlot::DrawName(drawer& d, const ivec4& rect, bool lit) {
    const std::string_view name = effect->name;
    const vec4 plain = lit ? vec4{1, 1, 1, 1} : textColor;
    const std::vector<int> offsets = highlights.empty() ? std::vector<int>() : d.calc_char_offsets(name);
    if (offsets.empty()) {
        d.set_text_color(plain);
        d.draw_text(rect, name);
        return;
    }
    // The name in runs, plain and matched in turn, each placed where it stands in the whole name so
    // that the runs line up as one text would.
    size_t byte = 0, point = 0; // walk the name once, counting code points
    auto pointAt = [&](size_t to) {
        for (; byte < to && byte < name.size(); ++byte)
            point += (static_cast<unsigned char>(name[byte]) & 0xC0) != 0x80;
        return std::min(point, offsets.size() - 1);
    };
    auto run = [&](size_t begin, size_t end, const vec4& color) {
        if (begin >= end)
            return;
        const int x = offsets[pointAt(begin)];
        if (x >= rect.w)
            return;
        d.set_text_color(color);
        d.draw_text({rect.x + x, rect.y, rect.w - x, rect.h}, name.substr(begin, end - begin));
    };
    const vec4 match = lit ? MatchOnHighlightColor : matchColor;
    size_t at = 0;
    for (const ByteRange& h : highlights) {
        const size_t begin = std::clamp<size_t>(h.begin, at, name.size());
        const size_t end = std::clamp<size_t>(h.end, begin, name.size());
        run(at, begin, plain);
        run(begin, end, match);
        at = end;
    }
    run(at, name.size(), plain);
}

void EffectSlot::MouseEnter(const event_info&) {
    if (!selected)
        popup.SetSelected(this);
    SetHover(true);
}

void EffectSlot::MouseLeave(const event_info&) {
    SetHover(false);
}

void EffectSlot::KeyDown(const event_info& e) {
    if (activate)
        activate(e);
}

void EffectSlot::MouseUp(const event_info& e) {
    if (activate)
        activate(e); // the popup ignores the right button
    if (e.data != static_cast<unsigned long long>(mouse::button::right) || !contextMenuAllowed)
        return;
    window* w = get_window();
    if (w == nullptr)
        return;
    ShowContextMenu(mouse::get_position(nullptr) - w->get_client_rect().position());
}

void EffectSlot::ShowContextMenu(ivec2 position) {
    window* w = get_window();
    if (w == nullptr || effect == nullptr)
        return;
    const size_t labelCount = shortcutLabels != nullptr ? shortcutLabels->size() : 0;
    popup_menu menu;
    menu.add_item(TitleId, effect->name);
    menu.enable_item(TitleId, false);
    menu.add_separator(SeparatorId);
    if (!userEntry)
        menu.add_item(FavoritesId, "Add to Favorites");
    if (labelCount < ShortcutSlotCount)
        menu.add_item(CreateShortcutId, "Create Shortcut");
    if (labelCount > 0) {
        popup_menu replace;
        for (size_t i = 0; i < labelCount && i < ShortcutSlotCount; ++i)
            replace.add_item(static_cast<uint32_t>(ReplaceFirstId + i),
                             std::to_string(i + 1) + ". " + (*shortcutLabels)[i]);
        menu.add_item(ReplaceShortcutId, "Replace Shortcut", -1, &replace);
    }
    menu.add_item(BlacklistId, "Blacklist");

    SetHover(true);
    const uint32_t chosen = menu.show(*w, position, false);
    // The row stays lit only while the pointer is still over it.
    const ivec2 local = mouse::get_position(this);
    SetHover(local.x >= 0 && local.y >= 0 && local.x < get_rect().w && local.y < get_rect().h);
    OnMenuChoice(chosen);
}

void EffectSlot::OnMenuChoice(uint32_t id) {
    const EffectData* entry = effect;
    switch (id) {
    case FavoritesId:
        popup.AddToList(entry, false);
        return;
    case BlacklistId:
        popup.AddToList(entry, true);
        return;
    case CreateShortcutId:
        popup.AddToShortcuts(entry);
        return;
    default:
        if (id >= ReplaceFirstId && id < ReplaceFirstId + ShortcutSlotCount)
            popup.ReplaceToShortcuts(entry, id - ReplaceFirstId);
        return;
    }
}
