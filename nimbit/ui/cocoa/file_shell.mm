#include "nimbit/ui/native_file_shell.h"

#import <AppKit/AppKit.h>

#include "nimbit/filesystem/file_path.h"
#include "nimbit/ui/cocoa/cocoa_util.h"

#ifdef GNUSTEP
#include <spawn.h>
#include <sys/wait.h>

extern char **environ;
#endif

namespace nimbit::file_shell {

#ifdef GNUSTEP
namespace {
// GNUstep's workspace opens files with GNUstep applications only; a Linux desktop's own opener is
// xdg-open. It is started in the background through a shell that returns at once, so nothing waits
// for the viewer and no child is left unreaped. False when the opener is not installed.
bool desktop_open(const std::string &target) {
    const char *script = "command -v xdg-open >/dev/null 2>&1 || exit 1; "
                         "xdg-open \"$1\" >/dev/null 2>&1 </dev/null & exit 0";
    const char *argv[] = {"/bin/sh", "-c", script, "sh", target.c_str(), nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, "/bin/sh", nullptr, nullptr, const_cast<char **>(argv), environ) != 0)
        return false;
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR)
            return false;
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
} // namespace
#endif

bool show_in_explorer(const file_path &path, bool select) {
    if (path.empty())
        return false;
#ifdef GNUSTEP
    // xdg-open cannot select an item: it opens the folder that holds it instead.
    return desktop_open(select ? path.stem().to_string() : path.to_string());
#else
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSString *full = ui::cocoa::to_ns_string(path.to_string());
    BOOL ok = select ? [[NSWorkspace sharedWorkspace] selectFile:full inFileViewerRootedAtPath:@""]
                     : [[NSWorkspace sharedWorkspace] openFile:full];
    [pool release];
    return ok;
#endif
}

bool open_link(const std::string &url) {
    if (url.empty())
        return false;
#ifdef GNUSTEP
    return desktop_open(url);
#else
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSURL *link = [NSURL URLWithString:ui::cocoa::to_ns_string(url)];
    const BOOL ok = link != nil && [[NSWorkspace sharedWorkspace] openURL:link];
    [pool release];
    return ok;
#endif
}

} // namespace nimbit::file_shell
