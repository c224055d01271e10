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

// Width and height from a PNG's header.
nimbit::_vec2<int> PngSize(const unsigned char* png) {
    auto be32 = [](const unsigned char* p) {
        return (p[0] << 24) | (p[1] << 16) | (p[2] << 8) | p[3];
    };
    return {be32(png + 16), be32(png + 20)};
}

std::vector<nimbit::_vec2<int>> ExpectedSizes() {
    std::vector<nimbit::_vec2<int>> sizes;
    for (const quillo::embedded_image* icon :
         {&ScreenshotIconDark, &ExportIconDark, &GalleryIconDark, &PrefIconDark, &LogoIconDark, &NewsIcon}) {
        const nimbit::_vec2<int> full = PngSize(icon->data);
        sizes.push_back({static_cast<int>(full.x * 0.125f), static_cast<int>(full.y * 0.125f)});
    }
    return sizes;
}

TEST(StatusScript, LinesAreEscapedPngsOfAnEighthOfTheIconSize) {
    const std::string lines = BuildToolbarIconLines();
    const std::vector<nimbit::_vec2<int>> sizes = ExpectedSizes();
    std::istringstream in(lines);
    std::string line;
    for (size_t i = 0; i < sizes.size(); ++i) {
        ASSERT_TRUE(std::getline(in, line));
        const std::string head = "var button" + std::to_string(i) + "Hex = \"";
        ASSERT_EQ(line.rfind(head, 0), 0u) << line.substr(0, 40);
        ASSERT_EQ(line.substr(line.size() - 2), "\";");
        const std::string body = line.substr(head.size(), line.size() - head.size() - 2);
        ASSERT_EQ(body.size() % 4, 0u);
        std::vector<unsigned char> bytes;
        for (size_t at = 0; at < body.size(); at += 4) {
            ASSERT_EQ(body.compare(at, 2, "\\x"), 0);
            for (char c : body.substr(at + 2, 2))
                ASSERT_TRUE((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f')) << "upper case or junk: " << c;
            bytes.push_back(static_cast<unsigned char>(std::stoi(body.substr(at + 2, 2), nullptr, 16)));
        }
        nimbit::ui::bitmap decoded;
        ASSERT_TRUE(decoded.load_image(bytes.data(), bytes.size(), 1.0f)) << "line " << i;
        EXPECT_EQ(decoded.get_size(), sizes[i]) << "line " << i;
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
    const std::vector<nimbit::_vec2<int>> sizes = ExpectedSizes();
    for (size_t i = 0; i < sizes.size(); ++i)
        expected += std::to_string(i) + " png " + std::to_string(sizes[i].x) + "x" +
                    std::to_string(sizes[i].y) + "\n";
    EXPECT_EQ(output, expected);
#endif
}

} // namespace
