#include "host/popup_binding.h"

#include "host/effects_popup.h"
#include "host/news_check.h"
#include "host/popup_window.h"
#include "host/script_bridge.h"
#include "host/shortcut_chord.h"
#include "nimbit/ui/keyboard.h"
#include "popup/effects_popup_window.h"
#include "popup/toolbar_icon_script.h"

#include <memory>
#include <thread>

namespace {

// The news check of one popup window, on a thread of its own. The window polls the count; when the
// window goes before the answer came, the thread is left to finish on its own (it owns what it uses).
class NewsRunner {
public:
    explicit NewsRunner(long long time) : check(std::make_shared<NewsCheck>()) {
        try {
            worker = std::thread([check = check, time] { check->Check(time); });
        } catch (...) {
            // No thread to be had: the badge simply never shows.
        }
    }
    ~NewsRunner() {
        if (!worker.joinable())
            return;
        if (check->GetCount() >= 0)
            worker.join();
        else
            worker.detach();
    }
    int32_t Count() const { return check->GetCount(); }

private:
    std::shared_ptr<NewsCheck> check;
    std::thread worker;
};

std::unique_ptr<PopupWindow> MakePopupWindow(PreferencesData& prefs, EffectsPopup& controller) {
    auto news = std::make_shared<NewsRunner>(prefs.newsTime);
    auto window = std::make_unique<EffectsPopupWindow>(prefs, [news] { return news->Count(); });
    auto& events = nimbit::ui::event_manager::instance();
    // A chosen entry arrives as the window's pressed event, a tool request as its custom event.
    events.add_event(window.get(), &controller, nimbit::ui::event_type::pressed,
                     [&controller](const nimbit::ui::event_info& e) {
                         controller.ApplyEffect(nimbit::ui::pointer_payload<const EffectData>(e.data));
                     });
    events.add_event(window.get(), &controller, nimbit::ui::event_type::custom,
                     [&controller](const nimbit::ui::event_info& e) {
                         controller.CustomEvent(static_cast<uint32_t>(e.data));
                     });
    return window;
}

std::string ToolbarIconLines() {
    return BuildToolbarIconLines();
}

} // namespace

void BindPopupWindow() {
    SetPopupWindowFactory(&MakePopupWindow);
    SetKeyQueries({&nimbit::ui::keyboard::is_key_down, &nimbit::ui::keyboard::was_key_pressed});
    SetToolbarIconScriptSource(&ToolbarIconLines);
}

namespace {
// Bound as the library loads: a script may ask for the status before the host starts the plug-in.
// The three registrations only store pointers and cannot fail.
const bool bound = (BindPopupWindow(), true);
} // namespace
