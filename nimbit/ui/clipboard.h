#pragma once

#include <string>
#include <string_view>

// The clipboard as the toolkit's controls use it: UTF-8 text. Images go through
// bitmap::copy_to_clipboard and bitmap::load_image_from_clipboard.

namespace nimbit::ui::clipboard {

bool set_text(std::string_view utf8);
// Empty when the clipboard holds no text.
std::string get_text();
bool has_text();
bool has_image();

} // namespace nimbit::ui::clipboard
