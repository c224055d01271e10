#pragma once

// Picture tests: what a scene painted, written as text, checked against an approved copy in
// tests/data/snapshots/<name>.txt. A layout or drawing change shows up as a readable diff of draw
// calls instead of going unnoticed. To approve a deliberate change, run the test with
// QUILLO_UPDATE_SNAPSHOTS=1 and read the diff of the snapshot files before committing them.
//
// The offscreen backend's text metric and test clock are fixed, so a scene paints the same on every
// machine; colours are written to three decimals so that compilers' float differences do not show.

#include "nimbit/ui/offscreen/offscreen_drawer.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace snapshot {

inline std::string text(const char* name, const nimbit::ivec4& r) {
    return r == nimbit::ivec4{}
               ? ""
               : " " + std::string(name) + "=" + std::to_string(r.x) + "," + std::to_string(r.y) + "," +
                     std::to_string(r.w) + "," + std::to_string(r.h);
}

inline std::string text(const char* name, const nimbit::vec4& c) {
    char out[64];
    std::snprintf(out, sizeof out, " %s=%.3f,%.3f,%.3f,%.3f", name, c.x, c.y, c.z, c.w);
    return c == nimbit::vec4{} ? "" : out;
}

// One line per call, naming only the fields the call set.
inline std::string describe(const nimbit::ui::draw_call& c) {
    std::ostringstream out;
    out << c.op << text("rect", c.rect) << text("source", c.source) << text("layout", c.layout);
    for (const auto& p : c.points)
        out << " (" << p.x << ',' << p.y << ')';
    for (const auto& s : c.path)
        out << " [" << s.start.x << ',' << s.start.y << ' ' << s.end.x << ',' << s.end.y << ']';
    out << text("color", c.color) << text("color2", c.color_2);
    if (c.value != 0)
        out << " value=" << c.value;
    if (!c.text.empty())
        out << " text=\"" << c.text << '"';
    if (c.mode_1 != 0 || c.mode_2 != 0)
        out << " modes=" << c.mode_1 << ',' << c.mode_2;
    if (c.image_size.x != 0 || c.image_size.y != 0)
        out << " image=" << c.image_size.x << 'x' << c.image_size.y;
    out << " @" << c.origin.x << ',' << c.origin.y << text("clip", c.clip);
    return out.str();
}

// A scene's record: titled sections of draw calls and free lines (a window's place, a value).
struct picture {
    std::vector<std::string> lines;

    void section(const std::string& title) { lines.push_back("# " + title); }
    void place(const std::string& what, const nimbit::ivec4& r) { lines.push_back(what + text("at", r)); }
    void calls(const std::vector<nimbit::ui::draw_call>& calls) {
        for (const auto& c : calls)
            lines.push_back(describe(c));
    }

    // Compares with the approved copy; on a difference, names the first differing line.
    ::testing::AssertionResult matches(const std::string& name) const {
        const std::string path = std::string(QUILLO_SOURCE_DIR) + "/tests/data/snapshots/" + name + ".txt";
        if (const char* update = std::getenv("QUILLO_UPDATE_SNAPSHOTS"); update && *update == '1') {
            std::ofstream file(path, std::ios::binary);
            for (const std::string& l : lines)
                file << l << '\n';
            return ::testing::AssertionSuccess();
        }
        std::ifstream file(path, std::ios::binary);
        std::string approved;
        for (size_t i = 0; std::getline(file, approved) || i < lines.size(); ++i, approved.clear())
            if (i >= lines.size() || approved != lines[i])
                return ::testing::AssertionFailure()
                       << path << " line " << i + 1 << "\n  approved: " << approved
                       << "\n  painted:  " << (i < lines.size() ? lines[i] : "");
        return ::testing::AssertionSuccess();
    }
};

} // namespace snapshot
