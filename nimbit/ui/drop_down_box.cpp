#include "nimbit/ui/drop_down_box.h"

#include "nimbit/ui/control_parts.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/image_frames.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/popup_menu.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/window.h"

#include <algorithm>

namespace nimbit::ui {

namespace {
bool menu_has(const popup_menu& menu, uint32_t id) {
    for (const menu_item& m : menu.get_items())
        if (m.id == id)
            return true;
    return false;
}
} // namespace

drop_down_box::drop_down_box() {
    set_name("DropDown");
    set_tab_stop(true);
    auto& ev = event_manager::instance();
    add_paint_handler(*this, &drop_down_box::draw);
    ev.add_event(this, this, event_type::theme_changed, &drop_down_box::on_theme);
    ev.add_event(this, this, event_type::create, &drop_down_box::on_theme);
    for (event_type t : {event_type::mouse_enter, event_type::mouse_leave, event_type::mouse_down})
        ev.add_event(this, this, t, &drop_down_box::on_mouse);
    ev.add_event(this, this, event_type::mouse_wheel, &drop_down_box::on_wheel);
    ev.add_event(this, this, event_type::key_down, &drop_down_box::on_key);
    ev.add_event(this, this, event_type::focus_gained, [this](const event_info&) { update(false); });
    ev.add_event(this, this, event_type::focus_lost, [this](const event_info&) { update(false); });
}

drop_down_box::~drop_down_box() = default;

void drop_down_box::add_item(uint32_t id, std::string_view text) {
    items.push_back({id, std::string(text), false});
    update(false);
}

void drop_down_box::add_items(std::string_view text) {
    size_t start = 0;
    while (start <= text.size()) {
        const size_t bar = text.find('|', start);
        const size_t stop = bar == std::string_view::npos ? text.size() : bar;
        const std::string_view piece = text.substr(start, stop - start);
        const auto id = static_cast<uint32_t>(items.size());
        if (piece == "-")
            add_separator(id);
        else
            add_item(id, piece);
        if (bar == std::string_view::npos)
            break;
        start = bar + 1;
    }
}

void drop_down_box::add_separator(uint32_t id) {
    items.push_back({id, {}, true});
}

int drop_down_box::find_item(uint32_t id) const {
    for (size_t i = 0; i < items.size(); ++i)
        if (items[i].id == id)
            return static_cast<int>(i);
    return -1;
}

void drop_down_box::remove_item(uint32_t id) {
    const int index = find_item(id);
    if (index < 0)
        return;
    items.erase(items.begin() + index);
    if (selected == index)
        selected = -1;
    else if (selected > index)
        --selected;
    update(false);
}

void drop_down_box::remove_all_items() {
    items.clear();
    selected = -1;
    update(false);
}

void drop_down_box::set_item_text(uint32_t id, std::string_view text) {
    const int index = find_item(id);
    if (index < 0)
        return;
    items[static_cast<size_t>(index)].text = text;
    update(false);
}

bool drop_down_box::select_item(int index, bool notify, event_agent agent) {
    if (index < 0 || index >= static_cast<int>(items.size()) || items[static_cast<size_t>(index)].separator)
        return false;
    selected = index;
    write_pointer();
    update(false);
    if (notify)
        event_manager::instance().fire_event(this, event_type::value_changed, event_state::normal, agent,
                                             items[static_cast<size_t>(index)].id);
    return true;
}

bool drop_down_box::set_selected_item(uint32_t id) {
    return select_item(find_item(id), false);
}

uint32_t drop_down_box::get_selected_id() const {
    return selected >= 0 ? items[static_cast<size_t>(selected)].id : no_id;
}

std::string drop_down_box::get_selected_text() const {
    return selected >= 0 ? items[static_cast<size_t>(selected)].text : std::string();
}

void drop_down_box::set_pointer(int* value, bool by_id) {
    bound = value;
    bound_by_id = by_id;
    if (!bound)
        return;
    if (by_id)
        set_selected_item(static_cast<uint32_t>(*bound));
    else
        select_item(*bound, false);
}

void drop_down_box::write_pointer() {
    if (!bound || selected < 0)
        return;
    *bound = bound_by_id ? static_cast<int>(items[static_cast<size_t>(selected)].id) : selected;
}

bool drop_down_box::step_selection(int steps, event_agent agent) {
    const int direction = steps < 0 ? -1 : 1;
    int index = selected;
    int target = selected;
    for (int left = std::abs(steps); left > 0;) {
        index += direction;
        if (index < 0 || index >= static_cast<int>(items.size()))
            break;
        if (!items[static_cast<size_t>(index)].separator) {
            target = index;
            --left;
        }
    }
    if (target == selected)
        return false;
    return select_item(target, true, agent);
}

void drop_down_box::on_wheel(const event_info& e) {
    const double delta = wheel_delta(e.data);
    // Away from the user goes up the list.
    if (delta > 0)
        step_selection(-1);
    else if (delta < 0)
        step_selection(1);
}

void drop_down_box::on_key(const event_info& e) {
    if (e.data == event_key::up)
        step_selection(-1);
    else if (e.data == event_key::down)
        step_selection(1);
    else if (e.data == ' ' || e.data == event_key::return_key)
        open_menu();
    else if (e.data > ' ' && e.data < 127)
        select_by_initial(static_cast<char>(e.data));
}

bool drop_down_box::select_by_initial(char initial) {
    // From the item after the selection, wrapping: pressing the letter again walks its items.
    const int count = static_cast<int>(items.size());
    const auto lower = [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    };
    for (int step = 1; step <= count; ++step) {
        const int index = ((selected < 0 ? -1 : selected) + step) % count;
        const item& it = items[static_cast<size_t>(index)];
        if (!it.separator && !it.text.empty() && lower(it.text[0]) == lower(initial))
            return index == selected || select_item(index);
    }
    return false;
}

void drop_down_box::on_mouse(const event_info& e) {
    if (e.type == event_type::mouse_enter || e.type == event_type::mouse_leave) {
        hovered = e.type == event_type::mouse_enter;
        update(false);
        return;
    }
    if (e.data == static_cast<uint32_t>(mouse::button::left))
        open_menu();
}

void drop_down_box::open_menu() {
    window* w = get_window();
    if (!w || items.empty())
        return;
    popup_menu menu;
    for (const item& i : items) {
        if (menu_has(menu, i.id))
            continue; // a repeated id cannot be told apart in the menu: the first one wins
        if (i.separator)
            menu.add_separator(i.id);
        else
            menu.add_item(i.id, i.text);
    }
    if (selected >= 0)
        menu.check_item(items[static_cast<size_t>(selected)].id, true);
    // The menu opens 10, 10 beyond the point: aim it at the box's lower-left corner.
    const _vec2<int> at = calc_absolute_pos();
    const uint32_t choice = menu.show(*w, {at.x - 10, at.y + get_rect().h - 10}, false);
    const int index = choice == popup_menu::dismissed ? -1 : find_item(choice);
    if (index >= 0 && index != selected)
        select_item(index, true, event_agent::user);
    update(false);
}

void drop_down_box::on_theme(const event_info&) {
    load_theme_image(arrow, get_theme(), theme_keys::dropdown_button_image);
    update(false);
}

void drop_down_box::draw(drawer& d, const ivec4& area) {
    const nimbit::ui::theme& t = get_theme();
    const int button_w = std::min(area.h, area.w);
    const ivec4 text_part{0, 0, area.w - button_w, area.h};
    const ivec4 button_part{area.w - button_w, 0, button_w, area.h};

    if (t.get<bool>(theme_keys::dropdown_gradient_text)) {
        d.draw_rect_gradient(text_part, t.get<vec4>(theme_keys::dropdown_gradient_text_1),
                             t.get<vec4>(theme_keys::dropdown_gradient_text_2), orientation::vertical);
    } else {
        d.set_brush_color(t.get<vec4>(hovered ? theme_keys::dropdown_text_part_color_hover
                                              : theme_keys::dropdown_text_part_color));
        d.draw_rect(text_part);
    }
    if (t.get<bool>(theme_keys::dropdown_gradient_button)) {
        d.draw_rect_gradient(button_part, t.get<vec4>(theme_keys::dropdown_gradient_button_1),
                             t.get<vec4>(theme_keys::dropdown_gradient_button_2), orientation::vertical);
    } else {
        d.set_brush_color(t.get<vec4>(hovered ? theme_keys::dropdown_button_part_color_hover
                                              : theme_keys::dropdown_button_part_color));
        d.draw_rect(button_part);
    }

    const vec4 font_color = t.get<vec4>(theme_keys::dropdown_font_color);
    if (arrow.is_loaded()) {
        const _vec2<int> size = frame_size(arrow, 1);
        d.draw_image({button_part.x + (button_part.w - size.x) / 2, (area.h - size.y) / 2, size.x, size.y},
                     arrow, frame_source(arrow, 1, 0), false);
    } else {
        const int cx = button_part.x + button_part.w / 2, cy = area.h / 2;
        const int r = std::max(2, button_part.w / 6);
        d.set_brush_color(font_color);
        d.draw_geometry({{cx - r, cy - r / 2}, {cx + r, cy - r / 2}, {cx, cy + r / 2 + 1}});
    }

    if (selected >= 0) {
        set_theme_font(d, t, "dropdown_");
        d.set_text_color(font_color);
        d.set_text_format(t.get<text_align>(theme_keys::dropdown_text_align), text_valign::center);
        const ivec4 text_rect{4, 0, std::max(0, text_part.w - 8), area.h};
        d.draw_clipped_text(text_rect, text_part, items[static_cast<size_t>(selected)].text);
    }

    d.set_pen_color(border_color(t, "dropdown_", has_focus(), hovered), 1.0f);
    d.draw_rect_border(area);
}

} // namespace nimbit::ui
