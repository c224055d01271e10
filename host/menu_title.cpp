#include "host/menu_title.h"

#include "host/host_platform.h"
#include "nimbit/utils/utf8_case.h"

namespace HostPlatform {

namespace {

// text without an incomplete UTF-8 sequence at its end (what is left of a character a byte cut split).
std::string_view WithoutSplitCharacter(std::string_view text) {
    for (size_t back = 1; back <= 3 && back <= text.size(); ++back) {
        const auto byte = static_cast<unsigned char>(text[text.size() - back]);
        if ((byte & 0xC0) == 0x80)
            continue; // a continuation byte: look further back for its lead
        const size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        return length > back ? text.substr(0, text.size() - back) : text;
    }
    return text;
}

} // namespace

MenuTitleMatch::MenuTitleMatch(std::string_view wanted, bool category)
    : folded(nimbit::utf8_fold(wanted)), foldedPrefix(nimbit::utf8_fold(WithoutSplitCharacter(wanted))),
      mayBeCut(category && wanted.size() >= CutCategoryLength) {}

bool MenuTitleMatch::Matches(std::string_view title, bool prefix) const {
    const std::string foldedTitle = nimbit::utf8_fold(title);
    return prefix ? foldedTitle.starts_with(foldedPrefix) : foldedTitle == folded;
}

} // namespace HostPlatform
