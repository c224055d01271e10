// The Windows platform against a real window and menu bar built here, as the host's main window.

#include "host/host_platform.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <vector>

namespace {

std::vector<WPARAM> commands; // what reached the window, in order

LRESULT CALLBACK RecordingProc(HWND window, UINT message, WPARAM w, LPARAM l) {
    if (message == WM_COMMAND)
        commands.push_back(w);
    return DefWindowProcW(window, message, w, l);
}

// A top-level window of its own class; destroyed (menus included) at the end of the test.
struct TestWindow {
    HWND handle = nullptr;
    explicit TestWindow(HMENU menuBar) {
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = RecordingProc;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = L"QuilloHostMenuTest";
        RegisterClassW(&windowClass);
        handle = CreateWindowExW(0, L"QuilloHostMenuTest", L"Host", WS_OVERLAPPEDWINDOW, 0, 0, 400, 300,
                                 nullptr, menuBar, windowClass.hInstance, nullptr);
    }
    ~TestWindow() {
        HostPlatform::SetMainWindow(nullptr);
        DestroyWindow(handle);
    }
};

struct Item {
    const wchar_t* text;
    UINT id; // 0 for a submenu
    std::vector<Item> submenu;
    bool disabled = false;
};

HMENU BuildMenu(const std::vector<Item>& items, bool bar) {
    HMENU menu = bar ? CreateMenu() : CreatePopupMenu();
    for (const Item& item : items) {
        const UINT state = item.disabled ? MF_GRAYED : MF_ENABLED;
        if (item.submenu.empty())
            AppendMenuW(menu, MF_STRING | state, item.id, item.text);
        else
            AppendMenuW(menu, MF_POPUP | state, reinterpret_cast<UINT_PTR>(BuildMenu(item.submenu, false)),
                        item.text);
    }
    return menu;
}

const std::vector<Item> EffectMenu = {
    {L"Effect &Controls\tF3", 10, {}},
    {L"Glow", 11, {}}, // a plain item where a category is wanted
    {L"&Stylize",
     0,
     {{L"&Glow", 101, {}},
      {L"Find &Edges", 102, {}},
      {L"&Mosaic", 103, {}, true},
      {L"Rock && Roll", 104, {}},
      {L"Scatter\tCtrl+Alt+S", 105, {}},
      {L"Glow", 106, {}}}},
    {L"Weichzeichnen und Scharfzeichnen", 0, {{L"Gau\u00DFscher Weichzeichner", 201, {}}}},
    {L"Verzerren", 0, {{L"Welle", 301, {}}}, true},
    {L"\u00C4hnlich", 0, {{L"\u00DCbergang", 401, {}}}},
    {L"Verzerren und Stilisieren mit \u00D6lfarbe", 0, {{L"Pinsel", 501, {}}}},
};

std::vector<Item> MenuBar(size_t topItems) {
    std::vector<Item> bar;
    for (const wchar_t* title : {L"&File", L"&Edit", L"&Composition", L"&Layer", L"&View"})
        bar.push_back({title, 0, {{L"Item", 1, {}}}});
    bar.push_back({L"Effe&ct", 0, EffectMenu});
    bar.push_back({L"&Window", 0, {{L"Item", 2, {}}}});
    bar.resize(topItems);
    return bar;
}

TEST(Win32HostPlatform, ChoosesEffectMenuItemsAsTheArtistWould) {
    TestWindow host(BuildMenu(MenuBar(7), true));
    ASSERT_NE(host.handle, nullptr);
    EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("Stylize", "Glow")); // no main window handed over yet
    HostPlatform::SetMainWindow(host.handle);

    // clang-format off
    const std::tuple<std::string, std::string, UINT> cases[] = { // id 0: nothing is sent
        {"Stylize", "Glow", 101},                       // the first of two equal titles
        {"sTYLIZE", "GLOW", 101},
        {"Stylize", "Find Edges", 102},                 // '&' marks are not part of the title
        {"Stylize", "Rock & Roll", 104},
        {"Stylize", "Scatter", 105},                    // nor is the shortcut after the tab
        {"Stylize", "Mosaic", 0},                       // greyed
        {"Stylize", "Missing", 0},
        {"Glow", "Glow", 0},                            // no submenu
        {"Verzerren", "Welle", 0},                      // greyed category
        {"Weichzeichnen und Scharfzeichne", "Gau\xC3\x9F" "scher Weichzeichner", 201}, // cut at 31 bytes
        {"Weichzeichnen und Scharfzeichnen", "gau\xC3\x9F" "scher weichzeichner", 201},
        {"Weichzeichnen und", "Gau\xC3\x9F" "scher Weichzeichner", 0}, // too short to be a cut
        {"Verzerren und Stilisieren mit \xC3", "Pinsel", 501}, // the cut split a character
        {"\xC3\xA4hnlich", "\xC3\xBC" "bergang", 401},  // case folded beyond ASCII
        {"Effect Controls", "Glow", 0},
    };
    // clang-format on
    for (const auto& [category, name, id] : cases) {
        SCOPED_TRACE(category + " / " + name);
        commands.clear();
        EXPECT_EQ(HostPlatform::ChooseEffectMenuItem(category, name), id != 0);
        EXPECT_EQ(commands, id != 0 ? std::vector<WPARAM>{MAKEWPARAM(id, 0)} : std::vector<WPARAM>{});
    }

    // With five menus the Effect menu is not there; without a menu bar nothing is.
    for (HMENU menuBar : {BuildMenu(MenuBar(5), true), HMENU{}}) {
        TestWindow shorter(menuBar);
        HostPlatform::SetMainWindow(shorter.handle);
        commands.clear();
        EXPECT_FALSE(HostPlatform::ChooseEffectMenuItem("Stylize", "Glow"));
        EXPECT_TRUE(commands.empty());
    }
}

} // namespace
