#pragma once

// How every platform finds an item of the host's Effect menu by title (host/host_platform.h):
// titles compare case-folded, and a category the host cut to CutCategoryLength bytes stands for the
// first title that begins with it.

#include <string>
#include <string_view>

namespace HostPlatform {

class MenuTitleMatch {
public:
    // wanted is a category (which may have been cut) or an effect's name.
    MenuTitleMatch(std::string_view wanted, bool category);

    // Whether title (UTF-8) equals the wanted one or, with prefix, begins with it.
    bool Matches(std::string_view title, bool prefix) const;
    // Whether a second, prefix pass applies: a category long enough to have been cut.
    bool MayBeCut() const { return mayBeCut; }

private:
    std::string folded;
    std::string foldedPrefix; // without a character the cut split
    bool mayBeCut = false;
};

// The index of the first of count titles (titleAt(i), UTF-8) that matches wanted; for a category
// when none equals it, of the first that begins with it. -1 when there is none.
template <typename TitleAt>
int FindMenuTitle(int count, TitleAt titleAt, std::string_view wanted, bool category) {
    const MenuTitleMatch match(wanted, category);
    for (int pass = 0; pass < (match.MayBeCut() ? 2 : 1); ++pass) {
        for (int i = 0; i < count; ++i) {
            if (match.Matches(titleAt(i), pass == 1))
                return i;
        }
    }
    return -1;
}

} // namespace HostPlatform
