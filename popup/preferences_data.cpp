#include "popup/preferences_data.h"

#include "nimbit/filesystem/known_folders.h"
#include "nimbit/utils/timer.h"

int64_t CurrentNewsTime() {
    return static_cast<int64_t>(nimbit::timer::get_current_microseconds() / 1000000.0);
}

PreferencesData::PreferencesData()
    : captureFolder(nimbit::get_docs_data_path("", "", 0).append("Tarvelo/Quillo/Capture").to_string()),
      newsTime(CurrentNewsTime()) {}

std::string PreferencesData::GenerateShortcutText() const {
    std::string text;
    if (customCtrl != 0)
        text += "CTRL + ";
    if (customOpt != 0)
        text += "OPT + ";
    if (customShift != 0)
        text += "SHIFT + ";
    if (customCmd != 0)
        text += "CMD + ";
    text += customKeyName;
    return text;
}
