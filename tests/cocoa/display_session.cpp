#include "display_session.h"

#include "nimbit/ui/cocoa/native_app.h"
#include "nimbit/ui/window.h"
#include "tests/support/backend_conformance.h"
#include "tests/support/private_xvfb.h"

#include <gtest/gtest.h>
// After gtest: Xlib defines macros (None, Status) that clash with its names.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cstdlib>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace cocoa_test {

namespace {

// Runs script through a shell (arguments split at spaces, as the callers write them).
pid_t shell(const std::string& script) {
    const char* argv[] = {"/bin/sh", "-c", script.c_str(), nullptr};
    pid_t pid = 0;
    return posix_spawn(&pid, argv[0], nullptr, nullptr, const_cast<char**>(argv), environ) == 0 ? pid : -1;
}

// An Xvfb of the test process's own, on a display number the server picks itself (-displayfd), so
// that tests running in parallel never collide.
class xvfb_environment : public ::testing::Environment {
public:
    void SetUp() override {
        nimbit::ui::cocoa::autorelease_pool pool;
        std::string name;
        server = quillo_test::start_private_xvfb(name);
        ASSERT_GT(server, 0) << "Xvfb did not start (is it installed?)";
        setenv("DISPLAY", name.c_str(), 1);
        ASSERT_TRUE(nimbit::ui::cocoa::start_application());
    }
    void TearDown() override { quillo_test::stop_private_xvfb(server); }

private:
    pid_t server = -1;
};

// Each test runs inside an autorelease pool of its own, as code on the event loop would.
class pool_per_test : public ::testing::EmptyTestEventListener {
    void OnTestStart(const ::testing::TestInfo&) override { pool = new nimbit::ui::cocoa::autorelease_pool; }
    void OnTestEnd(const ::testing::TestInfo&) override {
        delete pool;
        pool = nullptr;
    }
    nimbit::ui::cocoa::autorelease_pool* pool = nullptr;
};

const bool registered = [] {
    ::testing::AddGlobalTestEnvironment(new xvfb_environment);
    ::testing::UnitTest::GetInstance()->listeners().Append(new pool_per_test);
    return true;
}();

} // namespace

bool xdotool(const std::string& arguments) {
    const pid_t pid = shell("exec xdotool " + arguments);
    int status = 0;
    // The application keeps handling events meanwhile, as it would while a person types.
    while (pid > 0 && waitpid(pid, &status, WNOHANG) == 0)
        nimbit::ui::cocoa::process_events(0.005);
    return pid > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void xdotool_later(const std::string& arguments) {
    // The shell returns at once, so that no child is left for us to reap.
    const pid_t pid = shell("xdotool " + arguments + " >/dev/null 2>&1 &");
    if (pid > 0)
        waitpid(pid, nullptr, 0);
}

} // namespace cocoa_test

// The shared scenes' driver: the screen under the window, xdotool's pointer and keyboard.
namespace backend_test {

namespace {

std::string at_screen(nimbit::ui::window& w, point at) {
    const nimbit::ivec4 client = w.get_client_rect();
    return "mousemove " + std::to_string(client.x + at.x) + " " + std::to_string(client.y + at.y);
}

} // namespace

// The pasteboard's image goes through AppKit's own representation: a translucent pixel may come
// back a unit off.
const int clipboard_rounding = 1;

bool wait_for(const std::function<bool()>& done, double timeout_seconds) {
    return nimbit::ui::cocoa::run_until(done, timeout_seconds);
}

void pump(double seconds) {
    nimbit::ui::cocoa::process_events(seconds);
}

// The screen's pixels under the client area (the X server's, y down).
nimbit::graphics::rgba_image shown(nimbit::ui::window& w) {
    static Display* d = XOpenDisplay(nullptr);
    const nimbit::ivec4 rect = w.get_client_rect();
    nimbit::graphics::rgba_image image;
    if (!d || rect.w <= 0 || rect.h <= 0)
        return image;
    XSync(d, False);
    XImage* x = XGetImage(d, DefaultRootWindow(d), rect.x, rect.y, static_cast<unsigned>(rect.w),
                          static_cast<unsigned>(rect.h), AllPlanes, ZPixmap);
    if (!x)
        return image;
    image.size = {rect.w, rect.h};
    image.pixels.resize(static_cast<size_t>(rect.w) * rect.h * 4);
    for (int y = 0; y < rect.h; ++y)
        for (int xx = 0; xx < rect.w; ++xx) {
            const unsigned long p = XGetPixel(x, xx, y);
            unsigned char* o = &image.pixels[(static_cast<size_t>(y) * rect.w + xx) * 4];
            o[0] = static_cast<unsigned char>((p & x->red_mask) >> 16);
            o[1] = static_cast<unsigned char>((p & x->green_mask) >> 8);
            o[2] = static_cast<unsigned char>(p & x->blue_mask);
            o[3] = 255;
        }
    XDestroyImage(x);
    return image;
}

// The button is held for a tenth of a second, as a person does. (GNUstep delivers a press that
// focuses the window after a release already queued behind it.)
bool click(nimbit::ui::window& w, point at, int button) {
    const std::string b = std::to_string(button == 2 ? 3 : button + 1); // xdotool's right is 3
    return cocoa_test::xdotool(at_screen(w, at) + " mousedown " + b + " sleep 0.1 mouseup " + b);
}

// Each button is held a little, as a hand does: GNUstep loses a release that follows its press
// within a few ms.
bool double_click(nimbit::ui::window& w, point at) {
    return cocoa_test::xdotool(
        at_screen(w, at) + " mousedown 1 sleep 0.06 mouseup 1 sleep 0.06 mousedown 1 sleep 0.06 mouseup 1");
}

bool wheel(nimbit::ui::window& w, point at, int notches) {
    return cocoa_test::xdotool(at_screen(w, at) + " click --repeat " + std::to_string(std::abs(notches)) +
                               (notches > 0 ? " 4" : " 5"));
}

bool type(nimbit::ui::window&, const std::string& letters) {
    return cocoa_test::xdotool("type --delay 30 " + letters);
}

} // namespace backend_test
