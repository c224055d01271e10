#include "nimbit/ui/offscreen/offscreen_file_shell.h"

namespace nimbit::ui {

offscreen_file_shell& offscreen_file_shell::instance() {
    static offscreen_file_shell shell;
    return shell;
}

void offscreen_file_shell::reset() {
    recorded.clear();
    result = true;
}

bool offscreen_file_shell::record(shell_call call) {
    recorded.push_back(std::move(call));
    return result;
}

} // namespace nimbit::ui

namespace nimbit::file_shell {

bool show_in_explorer(const file_path& path, bool select) {
    ui::shell_call call;
    call.path = path;
    call.select = select;
    return ui::offscreen_file_shell::instance().record(std::move(call));
}

bool open_link(const std::string& url) {
    ui::shell_call call;
    call.what = ui::shell_call::kind::open_link;
    call.url = url;
    return ui::offscreen_file_shell::instance().record(std::move(call));
}

} // namespace nimbit::file_shell
