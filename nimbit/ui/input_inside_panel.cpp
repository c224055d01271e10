#include "nimbit/ui/input_inside_panel.h"

#include "nimbit/ui/clipboard.h"
#include "nimbit/ui/control_parts.h"
#include "nimbit/ui/drawer.h"
#include "nimbit/ui/ime.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/mouse.h"
#include "nimbit/ui/theme_keys.h"
#include "nimbit/ui/wide_text.h"
#include "nimbit/ui/window.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace nimbit::ui {

namespace {
event_manager& events() {
    return event_manager::instance();
}

bool is_word_char(char32_t c) {
    return c == U'_' || (c >= U'0' && c <= U'9') || (c >= U'A' && c <= U'Z') || (c >= U'a' && c <= U'z') ||
           c > 0x7F;
}
} // namespace

input_inside_panel::input_inside_panel(widget& box) : box(box) {
    set_name("InputInside");
    menu.add_item(menu_cut, "Cut");
    menu.add_item(menu_copy, "Copy");
    menu.add_item(menu_paste, "Paste");
    menu.add_item(menu_delete, "Delete");
    menu.add_separator(menu_separator);
    menu.add_item(menu_select_all, "Select All");

    auto& ev = events();
    ev.add_event(this, this, event_type::key_down, &input_inside_panel::key_pressed);
    ev.add_event(this, this, event_type::key_char, &input_inside_panel::input_char);
    ev.add_event(this, this, event_type::input_ime, &input_inside_panel::input_ime);
    ev.add_event(this, this, event_type::mouse_down, &input_inside_panel::mouse_pressed);
    ev.add_event(this, this, event_type::mouse_up, &input_inside_panel::mouse_released);
    ev.add_event(this, this, event_type::mouse_dbl_click, &input_inside_panel::mouse_dbl_click);
    ev.add_event(this, this, event_type::mouse_move, &input_inside_panel::mouse_move);
    ev.add_event(this, this, event_type::focus_gained, &input_inside_panel::focus_changed);
    ev.add_event(this, this, event_type::focus_lost, &input_inside_panel::focus_changed);
    ev.add_event(this, this, event_type::timer, &input_inside_panel::timer);
    ev.add_event(this, this, event_type::parent_resize, &input_inside_panel::parent_resize);
    add_paint_handler(*this, &input_inside_panel::draw);
    ev.add_event(this, this, event_type::theme_changed, &input_inside_panel::apply_theme);
    ev.add_event(this, this, event_type::create, &input_inside_panel::apply_theme);
    ev.add_event(this, this, event_type::resize, [this](const event_info&) { update_scroll(); });
    ev.add_event(this, this, event_type::mouse_enter,
                 [](const event_info&) { mouse::set_cursor(cursor::ibeam); });
    ev.add_event(this, this, event_type::mouse_leave, [this](const event_info&) {
        if (!dragging)
            mouse::set_cursor(cursor::arrow);
    });
}

input_inside_panel::~input_inside_panel() {
    release_capture(*this);
}

const nimbit::ui::theme& input_inside_panel::style() const {
    return box.get_theme();
}

void input_inside_panel::raise(event_type type, event_agent agent, unsigned long long data) {
    events().fire_event(&box, type, event_state::normal, agent, data);
}

// --- text ---------------------------------------------------------------------------------------

void input_inside_panel::set_text(std::string_view utf8, bool notify) {
    std::u32string next = utf8_to_wide(utf8);
    next.erase(std::remove(next.begin(), next.end(), U'\r'), next.end());
    if (max_chars > 0 && next.size() > static_cast<size_t>(max_chars))
        next.resize(static_cast<size_t>(max_chars));
    text = std::move(next);
    caret = static_cast<int32_t>(text.size());
    selection = 0;
    ring_index = 0;
    redo_count = 0;
    for (auto& slot : ring)
        slot.clear();
    ring[0] = text;
    text_changed();
    if (notify)
        raise(event_type::value_changed, event_agent::program, 0);
}

std::string input_inside_panel::get_text() const {
    return wide_to_utf8(text);
}

std::string input_inside_panel::get_selected_text() const {
    if (selection == 0)
        return {};
    const int start = std::min(caret, caret + selection);
    return wide_to_utf8(std::u32string_view(text).substr(static_cast<size_t>(start),
                                                         static_cast<size_t>(std::abs(selection))));
}

void input_inside_panel::set_caret(int index, int selection_length) {
    const int length = static_cast<int>(text.size());
    caret = std::clamp(index, 0, length);
    selection = std::clamp(selection_length, -caret, length - caret);
    make_caret_visible();
}

void input_inside_panel::select_whole_text() {
    caret = 0;
    selection = static_cast<int32_t>(text.size());
    make_caret_visible();
}

void input_inside_panel::insert_text(std::u32string inserted, bool notify, bool select_inserted,
                                     event_agent agent) {
    inserted.erase(std::remove(inserted.begin(), inserted.end(), U'\r'), inserted.end());
    if (max_chars > 0) {
        const size_t room = text.size() < static_cast<size_t>(max_chars) ? max_chars - text.size() : 0;
        if (inserted.size() > room)
            inserted.resize(room);
    }
    if (inserted.empty())
        return;
    const int at = caret;
    change_text(at, 0, inserted, true, notify, agent);
    if (select_inserted) {
        selection = -static_cast<int32_t>(inserted.size());
        make_caret_visible();
    }
}

void input_inside_panel::erase_text(int index, int count, bool notify) {
    const int length = static_cast<int>(text.size());
    index = std::clamp(index, 0, length);
    count = std::clamp(count, 0, length - index);
    if (count == 0)
        return;
    change_text(index, count, {}, true, notify, event_agent::program);
}

void input_inside_panel::erase_selected_text(bool notify) {
    if (selection == 0)
        return;
    erase_text(std::min(caret, caret + selection), std::abs(selection), notify);
}

void input_inside_panel::change_text(int index, int count, std::u32string_view inserted, bool record,
                                     bool notify, event_agent agent) {
    text.replace(static_cast<size_t>(index), static_cast<size_t>(count), inserted);
    // The caret stays behind an erased part and moves behind an inserted one.
    if (caret > index)
        caret = caret >= index + count ? caret - count : index;
    if (!inserted.empty())
        caret = index + static_cast<int32_t>(inserted.size());
    caret = std::clamp(caret, 0, static_cast<int32_t>(text.size()));
    selection = 0;
    text_changed();
    if (record)
        save_current_state();
    if (notify)
        raise(event_type::value_changed, agent, 0);
}

void input_inside_panel::text_changed() {
    display.assign(text.size(), password_char);
    refresh_metrics();
    make_caret_visible();
}

// --- undo -----------------------------------------------------------------------------------------

void input_inside_panel::save_current_state() {
    ++ring_index;
    ring[ring_index % undo_capacity] = text;
    redo_count = 0;
}

// The ring holds the current state and the nineteen before it: one more step back would land on a
// slot that a newer state has overwritten.
bool input_inside_panel::load_previous_state() {
    if (ring_index == 0 || redo_count >= undo_capacity - 1)
        return false;
    --ring_index;
    ++redo_count;
    load_state(ring_index);
    return true;
}

bool input_inside_panel::load_next_state() {
    if (redo_count == 0)
        return false;
    ++ring_index;
    --redo_count;
    load_state(ring_index);
    return true;
}

void input_inside_panel::load_state(uint32_t index) {
    text = ring[index % undo_capacity];
    caret = static_cast<int32_t>(text.size());
    selection = 0;
    text_changed();
}

// --- clipboard ------------------------------------------------------------------------------------

void input_inside_panel::set_clipboard() {
    if (password || selection == 0)
        return;
    clipboard::set_text(get_selected_text());
}

void input_inside_panel::get_clipboard() {
    if (!clipboard::has_text())
        return;
    std::u32string pasted = utf8_to_wide(clipboard::get_text());
    pasted.erase(std::remove(pasted.begin(), pasted.end(), U'\r'), pasted.end());
    if (pasted.empty())
        return;
    if (selection != 0) {
        const int start = std::min(caret, caret + selection);
        change_text(start, std::abs(selection), {}, false, false, event_agent::program);
    }
    insert_text(std::move(pasted), true, false, event_agent::program);
}

// --- options --------------------------------------------------------------------------------------

void input_inside_panel::set_type_password(bool on) {
    password = on;
    text_changed();
}

void input_inside_panel::set_max_chars(int count) {
    max_chars = std::max(0, count);
}

void input_inside_panel::set_default_text(std::string_view utf8) {
    default_text = utf8_to_wide(utf8);
    update(false);
}

// --- layout and metrics ---------------------------------------------------------------------------

void input_inside_panel::apply_theme(const event_info&) {
    const nimbit::ui::theme& t = style();
    font_name = t.get<std::string>(theme_keys::input_font_name);
    font_size = t.get<float>(theme_keys::input_font_size);
    font_weight_value = static_cast<int>(t.get<font_weight>(theme_keys::input_font_weight));
    font_style_value = static_cast<int>(t.get<font_style>(theme_keys::input_font_style));
    layout();
    refresh_metrics();
    update_scroll();
    update(false);
}

void input_inside_panel::layout() {
    const widget* parent = get_parent();
    if (!parent)
        return;
    const _vec2<int> m = style().get<_vec2<int>>(theme_keys::input_inside_margins);
    const _vec2<int> size = parent->get_size();
    const ivec4 inner{m.x, m.y, std::max(0, size.x - 2 * m.x), std::max(0, size.y - 2 * m.y)};
    if (inner != get_rect())
        set_rect(inner);
}

void input_inside_panel::parent_resize(const event_info&) {
    layout();
    update_scroll();
}

void input_inside_panel::refresh_metrics() {
    window* w = get_window();
    const std::u32string& shown = shown_text();
    if (!w || !w->is_created()) {
        offsets.assign(shown.size() + 1, 0);
        return;
    }
    drawer& d = w->get_drawer();
    d.set_text_font(font_name, font_size, static_cast<font_weight>(font_weight_value),
                    static_cast<font_style>(font_style_value));
    offsets = d.calc_char_offsets(wide_to_utf8(shown));
    // A backend must give one edge per character and one for the end; keep indexing safe if not.
    offsets.resize(shown.size() + 1, offsets.empty() ? 0 : offsets.back());
}

int input_inside_panel::get_caret_x() const {
    const size_t i = std::min(static_cast<size_t>(std::max(caret, 0)), offsets.size() - 1);
    return offsets.empty() ? -scroll : offsets[i] - scroll;
}

void input_inside_panel::update_scroll() {
    if (offsets.empty())
        return;
    const int width = get_rect().w;
    const int caret_x = offsets[std::min(static_cast<size_t>(caret), offsets.size() - 1)];
    const int text_width = offsets.back();
    const int room = std::max(0, width - 2); // the caret line needs a pixel at the right
    if (caret_x - scroll > room)
        scroll = caret_x - room;
    if (caret_x - scroll < 0)
        scroll = caret_x;
    // Never leave blank space at the right while text hides at the left.
    if (scroll > 0 && text_width - scroll < room)
        scroll = std::max(0, text_width - room);
}

void input_inside_panel::make_caret_visible() {
    caret_visible = true;
    update_scroll();
    update(false);
}

int input_inside_panel::char_at(int x) const {
    const int target = x + scroll;
    int best = 0;
    int best_distance = INT32_MAX;
    for (size_t i = 0; i < offsets.size(); ++i) {
        const int distance = std::abs(offsets[i] - target);
        if (distance < best_distance) {
            best_distance = distance;
            best = static_cast<int>(i);
        }
    }
    return std::min(best, static_cast<int>(text.size()));
}

// --- keys -----------------------------------------------------------------------------------------

void input_inside_panel::key_pressed(const event_info& e) {
    const bool command = keyboard::is_key_down(keyboard::shortcut);
    const bool shift = keyboard::is_key_down(keyboard::shift);
    const int length = static_cast<int>(text.size());
    const auto key = static_cast<uint32_t>(e.data);

    // Moves the caret when it can; at the end already, a plain press only drops the selection.
    auto move = [&](bool can_move, int new_caret, int new_selection) {
        if (!can_move) {
            if (!shift) {
                selection = 0;
                update(false);
            }
            return;
        }
        selection = shift ? new_selection : 0;
        caret = new_caret;
        make_caret_visible();
    };

    if (key == event_key::escape) {
        select_whole_text();
        erase_selected_text(true);
        if (window* w = get_window())
            w->get_root().focus(focus_cause::keyboard);
    } else if (command && key == 'A') {
        select_whole_text();
    } else if (command && key == 'C') {
        set_clipboard();
    } else if (command && key == 'V') {
        get_clipboard();
    } else if (command && key == 'X') {
        if (!password) {
            set_clipboard();
            erase_selected_text(true);
        }
    } else if (command && key == 'Z') {
        if (shift)
            load_next_state();
        else
            load_previous_state();
    } else if (key == event_key::left) {
        move(caret > 0, caret - 1, selection + 1);
    } else if (key == event_key::right) {
        move(caret < length, caret + 1, selection - 1);
    } else if (key == event_key::home) {
        move(caret > 0, 0, caret + selection);
    } else if (key == event_key::end) {
        move(caret < length, length, selection - length + caret);
    } else if (key == event_key::forward_delete) {
        if (selection != 0)
            erase_selected_text(true);
        else if (caret < length)
            erase_text(caret, 1, true);
    }
    raise(event_type::key_down, event_agent::program, e.data);
}

void input_inside_panel::input_char(const event_info& e) {
    const auto unit = static_cast<char32_t>(pair_low(e.data));
    if (unit == 27) {
        raise(event_type::cancelled, event_agent::program, 0);
        return;
    }
    if (unit == 13) {
        raise(event_type::pressed, event_agent::program, 0);
        return;
    }
    if (keyboard::is_key_down(keyboard::control))
        return;

    if (unit == 9) {
        // Nothing to insert; the application may still want to hear it.
    } else if (unit == 127) {
        if (selection != 0)
            erase_selected_text(true);
        else if (caret > 0)
            erase_text(caret - 1, 1, true);
    } else {
        char32_t c = unit;
        // Characters beyond the basic plane arrive as two halves.
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            pending_high = static_cast<char16_t>(unit);
            return;
        }
        if (unit >= 0xDC00 && unit <= 0xDFFF) {
            if (pending_high == 0)
                return;
            c = 0x10000 + ((static_cast<char32_t>(pending_high) - 0xD800) << 10) + (unit - 0xDC00);
        } else if (unit > 0x10FFFF) {
            return;
        }
        pending_high = 0;
        const bool has_room =
            max_chars <= 0 || static_cast<int>(text.size()) - std::abs(selection) < max_chars;
        if (!has_room)
            return;
        if (selection != 0) {
            const int start = std::min(caret, caret + selection);
            change_text(start, std::abs(selection), {}, false, false, event_agent::program);
        }
        insert_text(std::u32string(1, static_cast<char32_t>(c)), true, false, event_agent::program);
    }
    pending_high = 0;
    raise(event_type::key_char, event_agent::program, e.data);
}

void input_inside_panel::input_ime(const event_info&) {
    make_caret_visible();
}

// --- mouse ----------------------------------------------------------------------------------------

void input_inside_panel::run_menu() {
    window* w = get_window();
    if (!w)
        return;
    const bool has_selection = selection != 0;
    menu.enable_item(menu_cut, has_selection && !password);
    menu.enable_item(menu_copy, has_selection && !password);
    menu.enable_item(menu_delete, has_selection);
    menu.enable_item(menu_paste, true);
    menu.enable_item(menu_select_all, true);
    mouse::set_cursor(cursor::arrow);
    const _vec2<int> at = mouse::get_position(&w->get_root());
    const uint32_t choice = menu.show(*w, at, false);
    mouse::set_cursor(cursor::ibeam);
    switch (choice) {
    case menu_cut:
        if (!password) {
            set_clipboard();
            erase_selected_text(true);
        }
        break;
    case menu_copy:
        set_clipboard();
        break;
    case menu_paste:
        get_clipboard();
        break;
    case menu_delete:
        erase_selected_text(true);
        break;
    case menu_select_all:
        select_whole_text();
        break;
    default:
        break;
    }
}

void input_inside_panel::mouse_pressed(const event_info& e) {
    if (!active)
        return;
    if (e.data == static_cast<uint32_t>(mouse::button::right)) {
        run_menu();
        return;
    }
    if (e.data != static_cast<uint32_t>(mouse::button::left))
        return;
    // The click that brought the focus keeps the selection that select-on-focus made.
    if (std::exchange(keep_focus_selection, false))
        return;
    dragging = true;
    selection = 0;
    caret = char_at(mouse::get_position(this).x);
    drag_anchor = caret;
    mouse::capture_widget(*this);
    make_caret_visible();
}

void input_inside_panel::mouse_move(const event_info&) {
    if (!active || !dragging)
        return;
    const int at = char_at(mouse::get_position(this).x);
    caret = at;
    selection = drag_anchor - at;
    make_caret_visible();
}

void input_inside_panel::mouse_released(const event_info&) {
    if (!dragging)
        return;
    dragging = false;
    release_capture(*this);
}

void input_inside_panel::mouse_dbl_click(const event_info&) {
    if (!active)
        return;
    // Selects the word under the pointer.
    const int at = char_at(mouse::get_position(this).x);
    int start = at, end = at;
    const int length = static_cast<int>(text.size());
    while (start > 0 && is_word_char(text[static_cast<size_t>(start - 1)]))
        --start;
    while (end < length && is_word_char(text[static_cast<size_t>(end)]))
        ++end;
    if (start == end)
        return;
    caret = start;
    selection = end - start;
    make_caret_visible();
}

// --- focus and blinking ---------------------------------------------------------------------------

void input_inside_panel::focus_changed(const event_info& e) {
    if (e.type == event_type::focus_gained) {
        if (active)
            return;
        active = true;
        caret_visible = true;
        add_timer(blink_timer, blink_interval_ms);
        if (select_focus) {
            select_whole_text();
            keep_focus_selection = static_cast<focus_cause>(e.data) == focus_cause::mouse;
        }
        update(false);
        return;
    }
    keep_focus_selection = false;
    if (!active)
        return;
    active = false;
    caret_visible = false;
    remove_timer(blink_timer);
    pending_high = 0;
    if (dragging) {
        dragging = false;
        release_capture(*this);
    }
    update(false);
    if (apply_focus_loss)
        raise(event_type::pressed, event_agent::program, 0);
}

void input_inside_panel::timer(const event_info& e) {
    if (e.data != blink_timer)
        return;
    if (!active) {
        remove_timer(blink_timer);
        return;
    }
    caret_visible = !caret_visible;
    update(false);
}

// --- painting -------------------------------------------------------------------------------------

void input_inside_panel::draw(drawer& d, const ivec4& area) {
    const nimbit::ui::theme& t = style();
    d.set_text_font(font_name, font_size, static_cast<font_weight>(font_weight_value),
                    static_cast<font_style>(font_style_value));
    d.set_text_format(text_align::left, text_valign::center);

    const std::u32string& shown = shown_text();
    const bool composing = active && ime::is_composing();
    if (shown.empty() && !composing) {
        if (!default_text.empty()) {
            d.set_text_color(t.get<vec4>(theme_keys::input_font_default_text_color));
            d.draw_clipped_text(area, area, wide_to_utf8(default_text));
        }
    } else if (!shown.empty()) {
        const int width = offsets.empty() ? 0 : offsets.back();
        const ivec4 text_rect{-scroll, area.y, width + 2, area.h};
        d.set_text_color(t.get<vec4>(theme_keys::input_font_color));
        const std::string utf8 = wide_to_utf8(shown);
        d.draw_clipped_text(text_rect, area, utf8);
        if (selection != 0 && !offsets.empty()) {
            const size_t a = static_cast<size_t>(std::min(caret, caret + selection));
            const size_t b =
                std::min(static_cast<size_t>(std::max(caret, caret + selection)), offsets.size() - 1);
            const int x0 = offsets[std::min(a, offsets.size() - 1)] - scroll;
            const int x1 = offsets[b] - scroll;
            const ivec4 band{x0, 0, x1 - x0, area.h};
            d.set_brush_color(t.get<vec4>(theme_keys::input_selection_color));
            d.draw_rect(band);
            // The selected characters again, clipped to the band, in their own colour.
            d.set_text_color(t.get<vec4>(theme_keys::input_font_color_selected));
            const ivec4 clip{std::max(band.x, 0), 0, std::min(band.x + band.w, area.w) - std::max(band.x, 0),
                             area.h};
            if (clip.w > 0)
                d.draw_clipped_text(text_rect, clip, utf8);
        }
    }

    const int caret_x = get_caret_x();
    if (composing) {
        // The composition is drawn at the caret over a block, with the input method's own cursor.
        const std::string& marked = ime::get_string();
        const std::vector<int> marks = d.calc_char_offsets(marked);
        const int count = static_cast<int>(marks.size()) - 1;
        if (count > 0) {
            const ime::highlight h = ime::get_highlight_style();
            const int hs = std::clamp(h.start, 0, count), he = std::clamp(h.start + h.length, hs, count);
            d.set_brush_color(t.get<vec4>(theme_keys::input_ime_block_color));
            d.draw_rect({caret_x + marks[0], 0, marks[static_cast<size_t>(count)] - marks[0], area.h});
            if (he > hs) {
                d.set_pen_color(t.get<vec4>(theme_keys::input_ime_cursor_color), 1.0f);
                d.draw_line({caret_x + marks[static_cast<size_t>(hs)], area.h - 2},
                            {caret_x + marks[static_cast<size_t>(he)], area.h - 2});
            }
            d.set_text_color(t.get<vec4>(theme_keys::input_font_color));
            d.draw_clipped_text({caret_x, 0, marks.back() + 2, area.h}, area, marked);
            const int cursor = std::clamp(ime::get_cursor_position(), 0, count);
            const int cx = caret_x + marks[static_cast<size_t>(cursor)];
            d.set_pen_color(t.get<vec4>(theme_keys::input_ime_cursor_color), 1.0f);
            d.draw_line({cx, 2}, {cx, area.h - 2});
        }
    } else if (active && caret_visible) {
        d.set_pen_color(t.get<vec4>(theme_keys::input_font_color), 1.0f);
        d.draw_line({caret_x, 2}, {caret_x, area.h - 2});
    }
}

} // namespace nimbit::ui
