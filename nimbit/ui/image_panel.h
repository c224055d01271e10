#pragma once

#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/widget.h"

namespace nimbit {
class file_path;
}

namespace nimbit::ui {

class drawer;

// Shows one image over "default_back_color": the image's top-left corner sits at the offset and its
// size is the image's size times the zoom. Dragging with the left button moves it; the wheel zooms
// about the pointer. A new image is fitted into the panel (never enlarged) and centred.
class image_panel : public widget {
public:
    static constexpr float min_zoom = 0.01f;
    static constexpr float max_zoom = 64.0f;

    image_panel();
    ~image_panel() override;

    // False, and the panel keeps its image, when the bytes or the file are no PNG or JPG.
    bool set_image(const unsigned char* bytes, unsigned long length);
    bool set_image(const file_path& path);
    // An image decoded elsewhere (off the UI thread, then made a bitmap); an empty one clears.
    void set_image(bitmap next);
    void clear_image();
    bool has_image() const { return image.is_loaded(); }
    const bitmap& get_image() const { return image; }

    void set_zoom(float zoom);
    float get_zoom() const { return zoom; }
    // Zooms keeping the image point under `anchor` (panel coordinates) in place.
    void zoom_at(float zoom, _vec2<int> anchor);
    void set_offset(_vec2<int> offset);
    _vec2<int> get_offset() const { return offset; }
    // Fits the image into the panel again and repaints.
    void refresh();
    // Where the image is drawn, in the panel's coordinates.
    ivec4 image_rect() const;

    void on_wheel(const event_info& e);

private:
    void draw(drawer& d, const ivec4& area);
    void on_mouse(const event_info&);

    bitmap image;
    float zoom = 1.0f;
    _vec2<int> offset;
    bool dragging = false;
    _vec2<int> drag_start;
    _vec2<int> offset_start;
};

} // namespace nimbit::ui
