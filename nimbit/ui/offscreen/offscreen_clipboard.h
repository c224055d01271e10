#pragma once

#include "nimbit/ui/native_clipboard.h"
#include "nimbit/ui/offscreen/image_codecs.h"

#include <optional>

namespace nimbit::ui {

// The clipboard in memory. Like a real one it holds one thing at a time: setting text drops the
// image and the other way round.
class offscreen_clipboard final : public native_clipboard {
public:
    bool set_text(std::string_view utf8) override;
    std::string get_text() const override;
    bool has_text() const override { return text.has_value(); }
    bool set_image(const native_bitmap& image) override;
    std::unique_ptr<native_bitmap> get_image() const override;
    bool has_image() const override { return image.has_value(); }

    void clear();
    // Counts every change, so a test can tell that something was (or was not) copied.
    unsigned change_count() const { return changes; }

private:
    std::optional<std::string> text;
    std::optional<offscreen::rgba_image> image;
    unsigned changes = 0;
};

// The process-wide instance behind get_native_clipboard.
offscreen_clipboard& get_offscreen_clipboard();

} // namespace nimbit::ui
