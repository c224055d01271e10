// The toolbar icon lines of the status script, evaluated by a JavaScript engine as the host's script
// panel would.
#include "assets/icons.h"
#include "nimbit/ui/bitmap.h"
#include "popup/toolbar_icon_script.h"
#include "tests/foundation/temp_folder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

// The toolbar's icons in the order of its buttons, which the panel's script follows.
const quillo::embedded_image* const ToolbarOrder[] = {&ScreenshotIconDark, &ExportIconDark, &GalleryIconDark,
                                                      &PrefIconDark,       &LogoIconDark,   &NewsIcon};

// The icon as the panel shows it: an eighth of its pixel size, PNG-encoded.
std::vector<unsigned char> SmallPng(const quillo::embedded_image& icon) {
    nimbit::ui::bitmap image;
    EXPECT_TRUE(image.load_image(icon.data, icon.size, 1.0f));
    const nimbit::_vec2<int> full = image.get_size();
    EXPECT_TRUE(image.set_size({full.x / 8, full.y / 8}, true));
    return image.save_image_stream(nimbit::ui::image_format::png);
}

TEST(StatusScript, LinesAreLowerCaseEscapedSmallIconsInToolbarOrder) {
    std::istringstream in(BuildToolbarIconLines());
    std::string line;
    for (size_t i = 0; i < std::size(ToolbarOrder); ++i) {
        SCOPED_TRACE(i);
        ASSERT_TRUE(std::getline(in, line));
        const std::string head = "var button" + std::to_string(i) + "Hex = \"";
        ASSERT_EQ(line.rfind(head, 0), 0u) << line.substr(0, 40);
        ASSERT_EQ(line.substr(line.size() - 2), "\";");
        std::string expected;
        for (unsigned char byte : SmallPng(*ToolbarOrder[i])) {
            char hex[5];
            std::snprintf(hex, sizeof hex, "\\x%02x", byte);
            expected += hex;
        }
        EXPECT_EQ(line.substr(head.size(), line.size() - head.size() - 2), expected);
    }
    EXPECT_FALSE(std::getline(in, line));
}

TEST(StatusScript, ScriptEngineDefinesEveryButtonWithAValidPng) {
#ifndef QUILLO_NODE
    GTEST_SKIP() << "no JavaScript engine (node) on this machine";
#else
    temp_folder folder;
    const std::string script = (folder / "status.js").to_string();
    std::ofstream out(script, std::ios::binary);
    // The status text as the panel receives it, then a check that reads each string back as bytes.
    out << "var shortcutValue = 2;\n" << BuildToolbarIconLines();
    out << R"JS(
var vals = [button0Hex, button1Hex, button2Hex, button3Hex, button4Hex, button5Hex];
var sig = [137, 80, 78, 71, 13, 10, 26, 10];
var report = ["choice " + shortcutValue];
vals.forEach(function (s, i) {
  var ok = typeof s === "string" && s.length > 33;
  for (var k = 0; ok && k < 8; ++k) ok = s.charCodeAt(k) === sig[k];
  for (var k = 0; ok && k < s.length; ++k) ok = s.charCodeAt(k) < 256;
  var be = function (o) { return ((s.charCodeAt(o) << 24) | (s.charCodeAt(o + 1) << 16) | (s.charCodeAt(o + 2) << 8) | s.charCodeAt(o + 3)) >>> 0; };
  var end = s.slice(s.length - 8, s.length - 4) === "IEND";
  report.push(i + " " + (ok && end ? "png" : "bad") + " " + be(16) + "x" + be(20));
});
console.log(report.join("\n"));
)JS";
    out.close();
    std::FILE* pipe = popen((std::string(QUILLO_NODE) + " '" + script + "' 2>&1").c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::string output;
    char buffer[256];
    while (std::fgets(buffer, sizeof buffer, pipe) != nullptr)
        output += buffer;
    ASSERT_EQ(pclose(pipe), 0) << output;
    std::string expected = "choice 2\n";
    for (size_t i = 0; i < std::size(ToolbarOrder); ++i) {
        nimbit::ui::bitmap small;
        const std::vector<unsigned char> png = SmallPng(*ToolbarOrder[i]);
        ASSERT_TRUE(small.load_image(png.data(), png.size(), 1.0f));
        expected += std::to_string(i) + " png " + std::to_string(small.get_size().x) + "x" +
                    std::to_string(small.get_size().y) + "\n";
    }
    EXPECT_EQ(output, expected);
#endif
}

} // namespace
