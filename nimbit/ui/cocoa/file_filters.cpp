#include "nimbit/ui/cocoa/file_filters.h"

#include <algorithm>
#include <cctype>

namespace nimbit::ui::cocoa {

std::vector<std::string> allowed_file_types(const std::vector<file_browser::file_filter>& filters) {
    std::vector<std::string> types;
    auto add = [&types](const std::string& t) {
        if (!t.empty() && t != "*" && std::find(types.begin(), types.end(), t) == types.end())
            types.push_back(t);
    };
    for (const file_browser::file_filter& f : filters) {
        if (f.pattern.size() <= 2)
            continue;
        const std::string type = f.pattern.substr(2);
        std::string upper = type;
        std::transform(upper.begin(), upper.end(), upper.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        add(type);
        add(upper);
    }
    return types;
}

} // namespace nimbit::ui::cocoa
