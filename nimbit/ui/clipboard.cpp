#include "nimbit/ui/clipboard.h"

#include "nimbit/ui/native_clipboard.h"

namespace nimbit::ui::clipboard {

bool set_text(std::string_view utf8) {
    return get_native_clipboard().set_text(utf8);
}
std::string get_text() {
    return get_native_clipboard().get_text();
}
bool has_text() {
    return get_native_clipboard().has_text();
}
bool has_image() {
    return get_native_clipboard().has_image();
}

} // namespace nimbit::ui::clipboard
