#pragma once

#include "nimbit/filesystem/file_path.h"
#include "nimbit/ui/native_file_shell.h"

#include <string>
#include <vector>

// The shell without a desktop: every hand-off is recorded and answered with a result the test
// chooses (true unless told otherwise).

namespace nimbit::ui {

struct shell_call {
    enum class kind { show_in_explorer, open_link };
    kind what = kind::show_in_explorer;
    file_path path;
    bool select = false;
    std::string url;
};

class offscreen_file_shell {
public:
    static offscreen_file_shell& instance();

    const std::vector<shell_call>& calls() const { return recorded; }
    void set_result(bool ok) { result = ok; }
    void reset();

    bool record(shell_call call);

private:
    std::vector<shell_call> recorded;
    bool result = true;
};

} // namespace nimbit::ui
