#include "popup/parts/icon_view.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/window.h"

using namespace nimbit;
using namespace nimbit::ui;

IconView::IconView() {
    set_name("IconView");
    auto& ev = event_manager::instance();
    ev.add_event(this, this, event_type::draw, &IconView::Draw);
    ev.add_event(this, this, event_type::theme_changed, [this](const event_info&) { update(false); });
}

IconView::~IconView() = default;

void IconView::SetImage(image_stream const& stream) {
    bitmap next;
    if (!stream.empty() && next.load_image(stream))
        image = std::move(next);
    update(false);
}

void IconView::Draw(const event_info&) {
    window* w = get_window();
    if (w == nullptr)
        return;
    drawer& d = w->get_drawer();
    const ivec4& r = get_rect();
    d.set_brush_color(get_theme().get<vec4>("default_back_color"));
    d.draw_rect({0, 0, r.w, r.h});
    if (image.is_loaded())
        d.draw_image({0, 0, r.w, r.h}, image, true);
}
