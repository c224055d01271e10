#include "toolkit_fixture.h"

#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/keyboard.h"
#include "nimbit/ui/mouse.h"

namespace toolkit_test {
namespace {

using InputStateTest = OffscreenTest;

// Plain control and shift test the left key only; the option and command members take either key;
// any other member is a key code of its own.
TEST_F(InputStateTest, ModifierMembersTestTheirKeysWithTheKeptAsymmetries) {
    const struct {
        int member;
        std::vector<int> down;
        bool expected;
    } rows[] = {// clang-format off
        {keyboard::control, {59}, true},        {keyboard::control, {62}, false},
        {keyboard::left_control, {59}, true},   {keyboard::left_control, {59, 62}, false},
        {keyboard::right_control, {62}, true},  {keyboard::right_control, {59}, false},
        {keyboard::shift, {56}, true},          {keyboard::shift, {60}, false},
        {keyboard::left_shift, {56}, true},     {keyboard::left_shift, {56, 60}, false},
        {keyboard::right_shift, {60}, true},    {keyboard::option, {58}, true},
        {keyboard::left_option, {58}, true},    {keyboard::right_option, {58}, true},
        {keyboard::right_option, {61}, false},  {keyboard::command, {55}, true},
        {keyboard::left_command, {55}, true},   {keyboard::right_command, {55}, true},
        {keyboard::right_command, {54}, false}, {keyboard::tab, {49}, false},
        {-86, {48, 49, 55, 56, 58, 59}, false}, {12, {12}, true}};
    // clang-format on
    for (const auto& r : rows) {
        offscreen::reset_input();
        for (int code : r.down)
            offscreen::set_key_down(code, true);
        EXPECT_EQ(keyboard::is_key_down(r.member), r.expected) << "member " << r.member;
    }
}

TEST_F(InputStateTest, KeyPressesReportOnceAndThePointerIsRelativeToTheWidget) {
    std::vector<bool> pressed{keyboard::was_key_pressed(virtual_key::q)};
    for (bool down : {true, true, false, true}) {
        offscreen::set_key_down(virtual_key::q, down);
        pressed.push_back(keyboard::was_key_pressed(virtual_key::q));
    }
    EXPECT_EQ(pressed, (std::vector<bool>{false, true, false, false, true}));
    EXPECT_EQ(keyboard::get_key_name(-97), "");
    TestWindow win({100, 200, 300, 300});
    widget panel, item;
    panel.create(win.get_root(), {10, 20, 100, 100});
    item.create(panel, {5, 5, 10, 10});
    offscreen::set_pointer({130, 240});
    EXPECT_EQ(std::pair(mouse::get_position(nullptr), mouse::get_position(&item)),
              std::pair(_vec2<int>{130, 240}, _vec2<int>{15, 15}));
    offscreen::set_button_down(2, true);
    EXPECT_TRUE(mouse::is_button_down(mouse::button::right) && !mouse::is_button_down(mouse::button::left));
    mouse::set_cursor(cursor::hand);
    EXPECT_EQ(offscreen::get_cursor(), static_cast<uint32_t>(cursor::hand));
}

} // namespace
} // namespace toolkit_test
