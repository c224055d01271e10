#include "nimbit/filesystem/file_path.h"

#include <algorithm>

namespace nimbit {

namespace {

#if defined(_WIN32)
constexpr std::string_view separators = "/\\";
#else
constexpr std::string_view separators = "/";
#endif

bool is_separator(char c) {
    return separators.find(c) != std::string_view::npos;
}

std::string_view without_trailing_slash(std::string_view s) {
    if (!s.empty() && is_separator(s.back()))
        s.remove_suffix(1);
    return s;
}

// "C:" before the separator: the parent is the drive's root, which keeps its separator.
bool is_drive(std::string_view s) {
    return separators.size() > 1 && s.size() == 2 && s[1] == ':' &&
           ((s[0] >= 'A' && s[0] <= 'Z') || (s[0] >= 'a' && s[0] <= 'z'));
}

} // namespace

file_path file_path::append(const file_path& other) const {
    if (other.text.empty())
        return *this;
    std::string_view tail = other.text;
    if (is_separator(tail.front()))
        tail.remove_prefix(1);
    std::string out = text;
    if (!out.empty() && !is_separator(out.back()))
        out += '/';
    out += tail;
    return file_path(std::move(out));
}

file_path file_path::append_extension(std::string_view ext) const {
    std::string out = text;
    out += '.';
    out += ext;
    return file_path(std::move(out));
}

std::string file_path::extension() const {
    const auto dot = text.rfind('.');
    if (dot == std::string::npos)
        return {};
    const auto slash = text.find_last_of(separators);
    if (slash != std::string::npos && slash > dot)
        return {};
    return text.substr(dot + 1);
}

std::string file_path::leaf(bool keep_extension) const {
    std::string_view s = without_trailing_slash(text);
    const auto slash = s.find_last_of(separators);
    if (slash != std::string_view::npos)
        s.remove_prefix(slash + 1);
    if (!keep_extension) {
        const auto dot = s.rfind('.');
        if (dot != std::string_view::npos)
            s = s.substr(0, dot);
    }
    return std::string(s);
}

file_path file_path::stem() const {
    std::string_view s = without_trailing_slash(text);
    const auto slash = s.find_last_of(separators);
    if (slash == std::string_view::npos)
        return {};
    if (is_drive(s.substr(0, slash)))
        return file_path(s.substr(0, slash + 1));
    return file_path(s.substr(0, slash));
}

file_path file_path::fix_separator() const {
    std::string out = text;
    std::replace(out.begin(), out.end(), '\\', '/');
    return file_path(std::move(out));
}

} // namespace nimbit
