#pragma once

#include "nimbit/ui/widget.h"

#include <vector>

namespace nimbit::ui {

// 0 stacks children top to bottom; any other value left to right.
enum class flow_type : int { vertical = 0, horizontal = 1 };

// Lays its children out one after another along the flow, with fixed spans and flexible gaps between
// them. Spare length (panel length minus what spans and children need) is shared equally, in whole
// pixels, among the flexible items. Hidden children take no room. Only paints its background.
//
// Flags, in constructor order:
// - paint_background: fill with "default_back_color"; otherwise the parent shows through;
// - auto_size: after each layout the panel takes the length of its content along the flow;
// - fill: children are stretched across the flow to the panel's extent;
// - fit_cross: (without fill) the panel takes the extent of its widest child across the flow.
class flow_panel : public widget {
public:
    flow_panel(flow_type type, bool paint_background, bool auto_size, bool fill, bool fit_cross);
    ~flow_panel() override;

    void add_span(int pixels);
    void add_flex();
    void set_flex(widget* child, bool flexible);
    // Lays the items out now (it also runs by itself on every change that needs it).
    void organize();
    // The length that spans and visible children need along the flow.
    int get_min_size() const;
    // Removes every child and every span and gap.
    void clear();

    flow_type get_type() const { return type; }
    size_t item_count() const { return items.size(); }

private:
    enum class item_kind { child, span, flex };
    struct item {
        item_kind kind;
        widget* child = nullptr;
        int size = 0; // a span's length; a child's own length along the flow, before any share
        bool flexible = false;
    };

    void draw(const event_info&);
    void on_child_added(const event_info&);
    void on_child_removed(const event_info&);
    void on_child_resized(widget* child);
    void request_organize(const event_info&) { organize(); }
    int along(_vec2<int> s) const { return type == flow_type::vertical ? s.y : s.x; }
    int across(_vec2<int> s) const { return type == flow_type::vertical ? s.x : s.y; }

    flow_type type;
    bool paint_background;
    bool auto_size;
    bool fill;
    bool fit_cross;
    std::vector<item> items;
    bool organizing = false;
};

} // namespace nimbit::ui
