#pragma once

#include <string>
#include <string_view>

namespace nimbit {

// A UTF-8 path with "/" separators, held by value. Every operation returns a new path.
//
// On Windows too the code builds paths with "/", which every W function accepts; paths the system
// hands back (known folders, final paths) are turned to "/" where they enter (fix_separator). A
// path given with "\" still splits right there: extension, leaf and stem take either separator on
// Windows, and the parent of a drive's top folder ("C:/x") is the drive's root "C:/".
class file_path {
public:
    file_path() = default;
    file_path(std::string text) : text(std::move(text)) {}
    file_path(std::string_view text) : text(text) {}
    file_path(const char* text) : text(text ? text : "") {}

    // This path, "/" unless it is empty or already ends with one, then other without one leading "/".
    file_path append(const file_path& other) const;
    // This path, ".", ext (ext comes without its dot).
    file_path append_extension(std::string_view ext) const;
    // The text after the last "." when that dot follows the last "/"; no dot included.
    std::string extension() const;
    // The last component (one trailing "/" ignored), cut at its last "." unless keep_extension.
    std::string leaf(bool keep_extension) const;
    // The containing folder (one trailing "/" ignored): the text before the last "/", or empty.
    // Callers climb to parent folders with it.
    file_path stem() const;
    // Turns every "\" into "/".
    file_path fix_separator() const;

    const std::string& to_string() const { return text; }
    const char* c_str() const { return text.c_str(); }
    bool empty() const { return text.empty(); }

    friend bool operator==(const file_path&, const file_path&) = default;
    friend bool operator<(const file_path& a, const file_path& b) { return a.text < b.text; }

private:
    std::string text;
};

} // namespace nimbit
