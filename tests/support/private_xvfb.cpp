#include "tests/support/private_xvfb.h"

#include <csignal>
#include <fcntl.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quillo_test {

pid_t start_private_xvfb(std::string& display, bool no_reset) {
    int fds[2];
    if (pipe(fds) != 0)
        return -1;
    const std::string fd = std::to_string(fds[1]);
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent)
            _exit(1);
        close(fds[0]);
        // Its complaints (fonts, extensions) are not the test's output.
        const int null = open("/dev/null", O_WRONLY);
        if (null >= 0)
            dup2(null, STDERR_FILENO);
        execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", "1280x800x24", "-nolisten", "tcp",
               no_reset ? "-noreset" : static_cast<char*>(nullptr), static_cast<char*>(nullptr));
        _exit(127);
    }
    close(fds[1]);
    std::string number;
    char c;
    while (pid > 0 && read(fds[0], &c, 1) == 1 && c != '\n')
        number += c;
    close(fds[0]);
    if (pid < 0)
        return -1;
    if (number.empty()) {
        stop_private_xvfb(pid);
        return -1;
    }
    display = ":" + number;
    return pid;
}

void stop_private_xvfb(pid_t server) {
    if (server <= 0)
        return;
    kill(server, SIGTERM);
    int status = 0;
    waitpid(server, &status, 0);
}

} // namespace quillo_test
