#include "display_session.h"

#include "nimbit/ui/cocoa/native_app.h"
#include "tests/support/private_xvfb.h"

#include <gtest/gtest.h>
// After gtest: Xlib defines macros (None, Status) that clash with its names.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
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

Display* x_display() {
    static Display* d = XOpenDisplay(nullptr);
    return d;
}

} // namespace

bool xdotool(const std::string& arguments) {
    const pid_t pid = shell("exec xdotool " + arguments);
    int status = 0;
    // The application keeps handling events meanwhile, as it would while a person types.
    while (pid > 0 && waitpid(pid, &status, WNOHANG) == 0)
        nimbit::ui::cocoa::process_events(0.005);
    return pid > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool click_at(nimbit::_vec2<int> p, int button) {
    const std::string b = std::to_string(button);
    return xdotool("mousemove " + std::to_string(p.x) + " " + std::to_string(p.y) + " mousedown " + b +
                   " sleep 0.1 mouseup " + b);
}

void xdotool_later(const std::string& arguments) {
    // The shell returns at once, so that no child is left for us to reap.
    const pid_t pid = shell("xdotool " + arguments + " >/dev/null 2>&1 &");
    if (pid > 0)
        waitpid(pid, nullptr, 0);
}

nimbit::vec4 screen_image::pixel(int x, int y) const {
    if (x < 0 || y < 0 || x >= size.x || y >= size.y)
        return {};
    const unsigned char* p = &rgba[(static_cast<size_t>(y) * size.x + x) * 4];
    return {p[0] / 255.0f, p[1] / 255.0f, p[2] / 255.0f, p[3] / 255.0f};
}

screen_image capture_screen(const nimbit::ivec4& rect) {
    screen_image image;
    Display* d = x_display();
    if (!d || rect.w <= 0 || rect.h <= 0)
        return image;
    XSync(d, False);
    XImage* x = XGetImage(d, DefaultRootWindow(d), rect.x, rect.y, static_cast<unsigned>(rect.w),
                          static_cast<unsigned>(rect.h), AllPlanes, ZPixmap);
    if (!x)
        return image;
    image.size = {rect.w, rect.h};
    image.rgba.resize(static_cast<size_t>(rect.w) * rect.h * 4);
    for (int y = 0; y < rect.h; ++y)
        for (int xx = 0; xx < rect.w; ++xx) {
            const unsigned long p = XGetPixel(x, xx, y);
            unsigned char* o = &image.rgba[(static_cast<size_t>(y) * rect.w + xx) * 4];
            o[0] = static_cast<unsigned char>((p & x->red_mask) >> 16);
            o[1] = static_cast<unsigned char>((p & x->green_mask) >> 8);
            o[2] = static_cast<unsigned char>(p & x->blue_mask);
            o[3] = 255;
        }
    XDestroyImage(x);
    return image;
}

float color_distance(const nimbit::vec4& a, const nimbit::vec4& b) {
    return std::max({std::fabs(a.x - b.x), std::fabs(a.y - b.y), std::fabs(a.z - b.z)});
}

} // namespace cocoa_test
