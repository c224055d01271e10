#include "nimbit/ui/text_markup.h"

#include "nimbit/ui/wide_text.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace nimbit::ui {

namespace {

// Deeper nesting is read but not stacked, so hostile input cannot grow the stack.
constexpr size_t max_depth = 64;

bool iequals(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

bool is_space(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

struct tag {
    bool closing = false;
    std::string_view name;
    std::string_view attributes;
};

// Reads "<name attrs>" or "</name>" starting at s[0] == '<'; the length eaten, 0 when it is no tag.
size_t read_tag(std::string_view s, tag& out) {
    const size_t end = s.find('>');
    if (end == std::string_view::npos)
        return 0;
    std::string_view body = s.substr(1, end - 1);
    if (!body.empty() && body.back() == '/')
        body.remove_suffix(1);
    out.closing = !body.empty() && body.front() == '/';
    if (out.closing)
        body.remove_prefix(1);
    size_t n = 0;
    while (n < body.size() && std::isalpha(static_cast<unsigned char>(body[n])))
        ++n;
    out.name = body.substr(0, n);
    out.attributes = body.substr(n);
    if (out.name.empty() || (!out.attributes.empty() && !is_space(out.attributes.front())))
        return 0;
    return end + 1;
}

// Calls fn(name, value) for every attribute; values may be quoted with " or ' or bare.
template <typename F> void for_each_attribute(std::string_view s, F fn) {
    size_t i = 0;
    while (i < s.size()) {
        while (i < s.size() && is_space(s[i]))
            ++i;
        const size_t name_start = i;
        while (i < s.size() && !is_space(s[i]) && s[i] != '=')
            ++i;
        const std::string_view name = s.substr(name_start, i - name_start);
        std::string_view value;
        while (i < s.size() && is_space(s[i]))
            ++i;
        if (i < s.size() && s[i] == '=') {
            ++i;
            while (i < s.size() && is_space(s[i]))
                ++i;
            if (i < s.size() && (s[i] == '"' || s[i] == '\'')) {
                const char quote = s[i++];
                const size_t close = s.find(quote, i);
                const size_t stop = close == std::string_view::npos ? s.size() : close;
                value = s.substr(i, stop - i);
                i = stop == s.size() ? stop : stop + 1;
            } else {
                const size_t start = i;
                while (i < s.size() && !is_space(s[i]))
                    ++i;
                value = s.substr(start, i - start);
            }
        }
        if (name.empty()) {
            ++i; // a lone "=" or the like
            continue;
        }
        fn(name, value);
    }
}

void apply_font_attributes(std::string_view attributes, text_full_format& f) {
    for_each_attribute(attributes, [&](std::string_view name, std::string_view value) {
        if (iequals(name, "face")) {
            if (!value.empty())
                f.font_name = std::string(value);
        } else if (iequals(name, "size")) {
            float size = 0;
            const auto [p, ec] = std::from_chars(value.data(), value.data() + value.size(), size);
            if (ec == std::errc() && size >= 1.0f && size <= 400.0f)
                f.size = size;
        } else if (iequals(name, "weight")) {
            if (iequals(value, "bold"))
                f.weight = font_weight::bold;
            else if (iequals(value, "light"))
                f.weight = font_weight::light;
            else if (iequals(value, "regular") || iequals(value, "normal"))
                f.weight = font_weight::regular;
        } else if (iequals(name, "style")) {
            if (iequals(value, "italic"))
                f.style = font_style::italic;
            else if (iequals(value, "normal"))
                f.style = font_style::normal;
        } else if (iequals(name, "underline")) {
            f.underline = !(iequals(value, "0") || iequals(value, "false") || iequals(value, "no"));
        }
    });
}

// Decodes an entity at s[0] == '&'; the length eaten and the code point, 0 when it is none.
size_t read_entity(std::string_view s, char32_t& out) {
    const size_t end = s.find(';');
    if (end == std::string_view::npos || end > 10)
        return 0;
    const std::string_view name = s.substr(1, end - 1);
    struct named {
        std::string_view name;
        char32_t value;
    };
    static constexpr named table[] = {{"lt", '<'},   {"gt", '>'},    {"amp", '&'},
                                      {"quot", '"'}, {"apos", '\''}, {"nbsp", ' '}};
    for (const named& n : table)
        if (name == n.name) {
            out = n.value;
            return end + 1;
        }
    if (name.size() >= 2 && name[0] == '#') {
        const bool hex = name[1] == 'x' || name[1] == 'X';
        const std::string_view digits = name.substr(hex ? 2 : 1);
        uint32_t value = 0;
        const auto [p, ec] =
            std::from_chars(digits.data(), digits.data() + digits.size(), value, hex ? 16 : 10);
        if (ec != std::errc() || p != digits.data() + digits.size() || digits.empty())
            return 0;
        out = value; // append_utf8 turns anything outside Unicode into U+FFFD
        return end + 1;
    }
    return 0;
}

bool same_font(const text_full_format& a, const text_full_format& b) {
    return a.font_name == b.font_name && a.weight == b.weight && a.style == b.style && a.size == b.size &&
           a.underline == b.underline;
}

size_t code_points(std::string_view utf8) {
    size_t n = 0;
    for (char c : utf8)
        n += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return n;
}

} // namespace

markup_text parse_markup(std::string_view raw, const text_full_format& base) {
    // Damaged UTF-8 is repaired first, so that run ranges count the characters the drawer sees.
    const std::string clean = wide_to_utf8(utf8_to_wide(raw));
    const std::string_view source = clean;
    markup_text out;
    std::vector<text_full_format> stack{base};
    size_t unstacked = 0; // font tags opened beyond max_depth
    size_t chars = 0;

    auto current = [&]() -> const text_full_format& {
        return stack.back();
    };
    auto emit = [&](std::string_view piece) {
        if (piece.empty())
            return;
        const auto start = static_cast<unsigned>(chars);
        chars += code_points(piece);
        out.text += piece;
        if (!out.runs.empty() && out.runs.back().end == start && same_font(out.runs.back(), current())) {
            out.runs.back().end = static_cast<unsigned>(chars);
            return;
        }
        text_full_format run = current();
        run.start = start;
        run.end = static_cast<unsigned>(chars);
        out.runs.push_back(std::move(run));
    };

    size_t i = 0;
    while (i < source.size()) {
        const char c = source[i];
        if (c == '<') {
            tag t;
            const size_t eaten = read_tag(source.substr(i), t);
            if (eaten > 0) {
                if (iequals(t.name, "html") || iequals(t.name, "body")) {
                    i += eaten;
                    continue;
                }
                if (iequals(t.name, "br") && !t.closing) {
                    emit("\n");
                    i += eaten;
                    continue;
                }
                if (iequals(t.name, "font")) {
                    if (t.closing) {
                        if (unstacked > 0)
                            --unstacked;
                        else if (stack.size() > 1)
                            stack.pop_back();
                    } else if (stack.size() < max_depth) {
                        text_full_format next = current();
                        apply_font_attributes(t.attributes, next);
                        stack.push_back(std::move(next));
                    } else {
                        ++unstacked;
                    }
                    i += eaten;
                    continue;
                }
            }
            emit("<");
            ++i;
            continue;
        }
        if (c == '&') {
            char32_t value = 0;
            const size_t eaten = read_entity(source.substr(i), value);
            if (eaten > 0) {
                std::string utf8;
                append_utf8(utf8, value);
                emit(utf8);
                i += eaten;
                continue;
            }
            emit("&");
            ++i;
            continue;
        }
        const size_t next = source.find_first_of("<&", i);
        const size_t stop = next == std::string_view::npos ? source.size() : next;
        emit(source.substr(i, stop - i));
        i = stop;
    }
    return out;
}

} // namespace nimbit::ui
