#include "popup/parts/header_slot.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/window.h"

using namespace nimbit;
using namespace nimbit::ui;

namespace {

std::string Caption(HeaderKind kind) {
    switch (kind) {
    case HeaderKind::Effects:
        return "Effects";
    case HeaderKind::Presets:
        return "Presets";
    case HeaderKind::DidYouMean:
        return "Did you mean";
    case HeaderKind::NoMatches:
        break;
    }
    return "No Matches";
}

} // namespace

HeaderSlot::HeaderSlot(HeaderKind kind) : kind(kind), text(Caption(kind)) {
    set_name("HeaderSlot");
    event_manager::instance().add_event(this, this, event_type::draw, &HeaderSlot::Draw);
}

HeaderSlot::~HeaderSlot() = default;

void HeaderSlot::SetColors(vec4 const& back, vec4 const& text) {
    backColor = back;
    textColor = text;
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
