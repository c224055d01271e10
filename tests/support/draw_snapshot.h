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

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace snapshot {

inline void put(std::ostringstream& out, const char* name, const nimbit::ivec4& r) {
    if (r.x != 0 || r.y != 0 || r.w != 0 || r.h != 0)
        out << ' ' << name << '=' << r.x << ',' << r.y << ',' << r.w << ',' << r.h;
}

inline void put(std::ostringstream& out, const char* name, const nimbit::vec4& c) {
    char text[64];
    std::snprintf(text, sizeof text, " %s=%.3f,%.3f,%.3f,%.3f", name, c.x, c.y, c.z, c.w);
    out << text;
}

// One line per call, naming only the fields the call set.
inline std::string describe(const nimbit::ui::draw_call& c) {
    std::ostringstream out;
    out << c.op;
    put(out, "rect", c.rect);
    put(out, "source", c.source);
    put(out, "layout", c.layout);
    for (const auto& p : c.points)
        out << " (" << p.x << ',' << p.y << ')';
    for (const auto& s : c.path)
        out << " [" << s.start.x << ',' << s.start.y << ' ' << s.end.x << ',' << s.end.y << ']';
    if (c.color != nimbit::vec4{})
        put(out, "color", c.color);
    if (c.color_2 != nimbit::vec4{})
        put(out, "color2", c.color_2);
    if (c.value != 0)
        out << " value=" << c.value;
    if (!c.text.empty())
        out << " text=\"" << c.text << '"';
    if (c.mode_1 != 0 || c.mode_2 != 0)
        out << " modes=" << c.mode_1 << ',' << c.mode_2;
    if (c.image_size.x != 0 || c.image_size.y != 0)
        out << " image=" << c.image_size.x << 'x' << c.image_size.y;
    out << " @" << c.origin.x << ',' << c.origin.y;
    put(out, "clip", c.clip);
    return out.str();
}

// A scene's record: titled sections of draw calls and free lines (a window's place, a value).
class picture {
public:
    void section(const std::string& title) { lines.push_back("# " + title); }
    void line(const std::string& text) { lines.push_back(text); }
    void place(const std::string& what, const nimbit::ivec4& r) {
        std::ostringstream out;
        out << what;
        put(out, "at", r);
        lines.push_back(out.str());
    }
    void calls(const std::vector<nimbit::ui::draw_call>& calls) {
        for (const auto& c : calls)
            lines.push_back(describe(c));
    }

    // Compares with the approved copy; on a difference, names the first differing line.
    ::testing::AssertionResult matches(const std::string& name) const {
        const std::string path = std::string(QUILLO_SOURCE_DIR) + "/tests/data/snapshots/" + name + ".txt";
        std::string text;
        for (const std::string& l : lines)
            text += l + '\n';
        if (const char* update = std::getenv("QUILLO_UPDATE_SNAPSHOTS"); update && *update == '1') {
            std::ofstream(path, std::ios::binary) << text;
            return ::testing::AssertionSuccess() << "approved " << path;
        }
        std::ifstream file(path, std::ios::binary);
        if (!file)
            return ::testing::AssertionFailure() << "no approved picture at " << path
                                                 << " (run with QUILLO_UPDATE_SNAPSHOTS=1)";
        std::vector<std::string> approved;
        for (std::string l; std::getline(file, l);)
            approved.push_back(l);
        for (size_t i = 0; i < std::max(approved.size(), lines.size()); ++i) {
            const std::string want = i < approved.size() ? approved[i] : "(nothing)";
            const std::string got = i < lines.size() ? lines[i] : "(nothing)";
            if (want != got)
                return ::testing::AssertionFailure() << name << " line " << i + 1 << "\n  approved: " << want
                                                     << "\n  painted:  " << got;
        }
        return ::testing::AssertionSuccess();
    }

private:
    std::vector<std::string> lines;
};

} // namespace snapshot
