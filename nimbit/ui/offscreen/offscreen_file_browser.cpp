#include "nimbit/ui/offscreen/offscreen_file_browser.h"

namespace nimbit::ui {

offscreen_file_browser& offscreen_file_browser::instance() {
    static offscreen_file_browser browser;
    return browser;
}

void offscreen_file_browser::reset() {
    answers.clear();
    respond = nullptr;
    shown.clear();
}

std::vector<file_path> offscreen_file_browser::run(dialog_request request) {
    const bool single = request.what == dialog_request::kind::folder || !request.allow_multiple ||
                        request.type == file_browser::dialog_type::save;
    std::vector<file_path> chosen;
    if (!answers.empty()) {
        chosen = std::move(answers.front());
        answers.pop_front();
    } else if (respond) {
        chosen = respond(request);
    }
    shown.push_back(std::move(request));
    if (single && chosen.size() > 1)
        chosen.resize(1);
    return chosen;
}

} // namespace nimbit::ui

namespace nimbit::file_browser {

std::vector<file_path> file_dialog(const ui::window* parent, dialog_type type, const std::string& title,
                                   const std::vector<file_filter>& filters, bool allow_multiple,
                                   const std::string& default_name) {
    ui::dialog_request request;
    request.parent = parent;
    request.type = type;
    request.title = title;
    request.filters = filters;
    request.allow_multiple = allow_multiple;
    request.default_name = default_name;
    return ui::offscreen_file_browser::instance().run(std::move(request));
}

file_path folder_select_dialog(const ui::window* parent, const std::string& title,
                               const file_path& start_folder) {
    ui::dialog_request request;
    request.what = ui::dialog_request::kind::folder;
    request.parent = parent;
    request.title = title;
    request.start_folder = start_folder;
    std::vector<file_path> chosen = ui::offscreen_file_browser::instance().run(std::move(request));
    return chosen.empty() ? file_path() : chosen.front();
}

} // namespace nimbit::file_browser
