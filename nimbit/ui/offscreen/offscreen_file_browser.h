#pragma once

#include "nimbit/ui/native_file_browser.h"

#include <deque>
#include <functional>
#include <string>
#include <vector>

// File dialogs without a screen: each dialog is written down as a request and answered from a
// script the test sets up beforehand. Queued answers are used first, in order; then the responder,
// when one is set; otherwise the dialog is cancelled. Like a real panel, a dialog that chooses one
// item never returns more than one.

namespace nimbit::ui {

struct dialog_request {
    enum class kind { file, folder };
    kind what = kind::file;
    const window* parent = nullptr;
    file_browser::dialog_type type = file_browser::dialog_type::open;
    std::string title;
    std::vector<file_browser::file_filter> filters;
    bool allow_multiple = false;
    std::string default_name;
    file_path start_folder;
};

class offscreen_file_browser {
public:
    using responder = std::function<std::vector<file_path>(const dialog_request&)>;

    static offscreen_file_browser& instance();

    // Queues the answer to one future dialog; an empty list cancels it.
    void answer(std::vector<file_path> paths) { answers.push_back(std::move(paths)); }
    void set_responder(responder r) { respond = std::move(r); }
    // Every dialog shown so far, oldest first.
    const std::vector<dialog_request>& requests() const { return shown; }
    size_t pending_answers() const { return answers.size(); }
    // Forgets answers, responder and requests.
    void reset();

    // Called by the dialog functions.
    std::vector<file_path> run(dialog_request request);

private:
    std::deque<std::vector<file_path>> answers;
    responder respond;
    std::vector<dialog_request> shown;
};

} // namespace nimbit::ui
