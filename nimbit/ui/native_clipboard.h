#pragma once

#include <memory>
#include <string>
#include <string_view>

// The platform clipboard, process-wide: UTF-8 text and one image. Setting either replaces what
// the clipboard held.

namespace nimbit::ui {

class native_bitmap;

class native_clipboard {
public:
    virtual ~native_clipboard() = default;

    virtual bool set_text(std::string_view utf8) = 0;
    // Empty when the clipboard holds no text.
    virtual std::string get_text() const = 0;
    virtual bool has_text() const = 0;

    virtual bool set_image(const native_bitmap& image) = 0;
    // A copy of the image, or null when the clipboard holds none.
    virtual std::unique_ptr<native_bitmap> get_image() const = 0;
    virtual bool has_image() const = 0;
};

// Defined by the backend the program links with.
native_clipboard& get_native_clipboard();

} // namespace nimbit::ui
