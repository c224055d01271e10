#include "popup/parts/icon_view.h"

#include "nimbit/ui/drawer.h"
#include "nimbit/ui/window.h"

using namespace nimbit;
using namespace nimbit::ui;

IconView::IconView() {
    set_name("IconView");
    event_manager::instance().add_event(this, this, event_type::draw, &IconView::Draw);
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
    // The panel has painted its background under the image.
    const ivec4& r = get_rect();
    if (image.is_loaded())
        d.draw_image({0, 0, r.w, r.h}, image, true);
}
