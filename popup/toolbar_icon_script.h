#pragma once

#include <string>

// The toolbar icon lines of the status script that the host's script panel evaluates: for the
// screenshot, export, gallery, settings, logo and news icons (dark set), in that order,
// "var button<i>Hex = \"...\";\n" with the icon at an eighth of its size as PNG bytes written as
// lower-case "\xNN" escapes.
std::string BuildToolbarIconLines();
