#include "nimbit/ui/offscreen/offscreen_state.h"

#include "nimbit/ui/offscreen/offscreen_clipboard.h"
#include "nimbit/ui/offscreen/offscreen_file_browser.h"
#include "nimbit/ui/offscreen/offscreen_file_shell.h"
#include "nimbit/ui/offscreen/offscreen_input.h"
#include "nimbit/ui/offscreen/offscreen_popup_menu.h"
#include "nimbit/ui/offscreen/offscreen_window.h"

namespace nimbit::ui::offscreen {

void reset_state() {
    reset_input();
    get_offscreen_clipboard().clear();
    clear_menu_answers();
    clear_shown_menus();
    offscreen_file_browser::instance().reset();
    offscreen_file_shell::instance().reset();
    offscreen_window::set_modal_driver({});
    clear_file_drags();
}

} // namespace nimbit::ui::offscreen
