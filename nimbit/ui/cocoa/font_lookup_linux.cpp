#include "nimbit/ui/cocoa/font_lookup.h"

#include <fontconfig/fontconfig.h>

#include <map>

namespace nimbit::ui::cocoa {

std::string installed_font_family(std::string_view requested) {
    static std::map<std::string, std::string, std::less<>> cache;
    if (auto it = cache.find(requested); it != cache.end())
        return it->second;
    std::string family(requested);
    if (FcInit()) {
        const std::string name(requested);
        FcPattern* pattern = FcPatternCreate();
        FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(name.c_str()));
        FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
        FcDefaultSubstitute(pattern);
        FcResult result = FcResultNoMatch;
        if (FcPattern* match = FcFontMatch(nullptr, pattern, &result)) {
            FcChar8* found = nullptr;
            if (FcPatternGetString(match, FC_FAMILY, 0, &found) == FcResultMatch && found)
                family = reinterpret_cast<const char*>(found);
            FcPatternDestroy(match);
        }
        FcPatternDestroy(pattern);
    }
    cache.emplace(std::string(requested), family);
    return family;
}

} // namespace nimbit::ui::cocoa
