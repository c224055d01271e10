#pragma once

#include "nimbit/graphics/vec.h"
#include "nimbit/ui/image_stream.h"
#include "nimbit/ui/text_style.h"

#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>

namespace nimbit::ui {

class event_object;

// One look-and-feel value: either a string (font names) or a small value held in a fixed area.
// Reading a value as another type than it was stored with is not checked: every key has one type
// and the caller knows it.
class theme_style {
public:
    theme_style() = default;
    theme_style(const char* text) : text(text ? text : "") {}
    theme_style(std::string text) : text(std::move(text)) {}
    theme_style(std::string_view text) : text(text) {}
    theme_style(const vec4& v) { store(v); }
    theme_style(float v) { store(v); }
    theme_style(int v) { store(v); }
    theme_style(bool v) { store(v); }
    theme_style(const _vec2<int>& v) { store(v); }
    theme_style(font_style v) { store(v); }
    theme_style(font_weight v) { store(v); }
    theme_style(text_align v) { store(v); }
    theme_style(text_valign v) { store(v); }
    theme_style(const image_stream& v) { store(v); }

    template <typename T> T get() const {
        if constexpr (std::is_same_v<T, std::string>) {
            return text;
        } else {
            static_assert(sizeof(T) <= sizeof(value) && std::is_trivially_copyable_v<T>);
            T out;
            std::memcpy(&out, value, sizeof(T));
            return out;
        }
    }

private:
    template <typename T> void store(const T& v) {
        static_assert(sizeof(T) <= sizeof(value) && std::is_trivially_copyable_v<T>);
        std::memcpy(value, &v, sizeof(T));
    }

    std::string text;
    alignas(8) unsigned char value[16] = {};
};

// The styles of one widget, over the process-wide tables. A look-up translates the key through this
// theme's links (one level), then searches the own styles, plugin_map and default_map in turn.
// Keys are held as views: every key handed in must live for the whole process (string literals).
class theme {
public:
    using style_map = std::unordered_map<std::string_view, theme_style>;
    using link_map = std::unordered_map<std::string_view, std::string_view>;

    explicit theme(event_object* owner = nullptr);
    // A copy has the styles and links but no owner.
    theme(const theme& other);
    // Copies the styles and links; the owner stays.
    theme& operator=(const theme& other);

    // Stores the value and tells the owner (theme_changed, data = address of the key's characters),
    // also when the value did not change.
    template <typename T> void set(std::string_view key, const T& value) {
        set_style(key, theme_style(value));
    }
    template <typename T> T get(std::string_view key) const { return get_theme_style(key).get<T>(); }

    // A copy of the style found for the key; a key found nowhere is a programming error.
    theme_style get_theme_style(std::string_view key) const;
    // The key this theme reads instead of `key`, or `key` itself.
    std::string_view translate(std::string_view key) const;
    // Look-ups of `key` read `target` from now on; the owner hears of it unless the link is unchanged.
    void link(std::string_view key, std::string_view target);

    const style_map& get_styles() const { return styles; }
    event_object* get_owner() const { return owner; }

    // Filled by the application with its colour theme; replaced whole when the theme changes.
    static style_map plugin_map;
    // The toolkit's built-in defaults, in their fixed table order.
    static const style_map default_map;
    // The keys of default_map in table order (the map itself does not keep an order).
    static std::span<const std::string_view> default_keys();

private:
    void set_style(std::string_view key, theme_style style);

    style_map styles;
    link_map links;
    event_object* owner = nullptr;
};

} // namespace nimbit::ui
