#include "popup/parts/header_slot.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/window.h"

using namespace nimbit;
using namespace nimbit::ui;

HeaderSlot::HeaderSlot(std::string_view const& text, vec4 const& colour) : text(text), backColor(colour) {
    set_name("HeaderSlot");
    event_manager::instance().add_event(this, this, event_type::draw, &HeaderSlot::Draw);
}

HeaderSlot::~HeaderSlot() = default;

void HeaderSlot::SetTextColor(vec4 const& colour) {
    textColor = colour;
    update(false);
}

void HeaderSlot::Draw(const event_info&) {
    window* w = get_window();
    if (w == nullptr)
        return;
    drawer& d = w->get_drawer();
    // Over the panel's own background, which shows through a translucent colour.
    const ivec4& r = get_rect();
    d.set_brush_color(backColor);
    d.draw_rect({0, 0, r.w, r.h});
    d.set_text_font("Arial", 10);
    d.set_text_format(text_align::left, text_valign::center);
    d.set_text_color(textColor);
    d.draw_text({34, 2, r.w - 36, r.h - 4}, text);
}
