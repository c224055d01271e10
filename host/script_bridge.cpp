#include "host/script_bridge.h"

#include "host/effects_popup.h"
#include "popup/preferences_data.h"
#include "popup/preferences_file.h"
#include "popup/search_data_files.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

ToolbarIconScriptSource toolbarIconSource = nullptr;

// The engine reads 32 bits of the payload; the whole 8 bytes are written so that nothing stale
// remains in the rest.
void SetInteger(TaggedData* value, int64_t number) {
    std::memcpy(&value->data, &number, sizeof number);
    value->type = kTypeInteger;
}

void SetUndefined(TaggedData* value) {
    value->type = kTypeUndefined;
}

int32_t IntegerArgument(const TaggedData& value) {
    if (value.type == kTypeInteger)
        return value.data.intval;
    if (value.type == kTypeDouble) {
        const double number = value.data.fltval;
        if (std::isnan(number))
            return 0;
        if (number >= 2147483647.0)
            return INT32_MAX;
        if (number <= -2147483648.0)
            return INT32_MIN;
        return static_cast<int32_t>(number); // toward zero
    }
    return 0;
}

int32_t StoredShortcutChoice() {
    PreferencesData prefs;
    prefs.shortcutChoice = 0;
    LoadPreferences(prefs, ChooseReadFolder(SettingsFileName));
    return prefs.shortcutChoice;
}

// A zero-terminated copy that the engine hands back to ESFreeMem.
char* EngineCopy(const std::string& text) {
    char* copy = static_cast<char*>(std::malloc(text.size() + 1));
    if (copy != nullptr)
        std::memcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

// Runs one of the controller's command words; false when word is none of them.
bool RunControllerCommand(EffectsPopup& controller, std::string_view word, TaggedData* argv, long argc,
                          TaggedData* result, long& status) {
    auto run = [&](uint32_t kind) {
        return controller.Execute(PopupCommand{kind});
    };
    status = ScriptOk;
    if (word == "shortcut") {
        if (argc != 2) {
            status = ScriptBadArguments;
            return true;
        }
        controller.Preferences().shortcutChoice = IntegerArgument(argv[1]);
        run(PopupCommand::SaveSettings);
        SetUndefined(result);
    } else if (word == "news") {
        SetInteger(result, static_cast<int64_t>(run(PopupCommand::NewsCount)));
    } else if (word == "screenshot") {
        run(PopupCommand::Screenshot);
        SetUndefined(result);
    } else if (word == "export") {
        run(PopupCommand::Export);
        SetUndefined(result);
    } else if (word == "gallery") {
        run(PopupCommand::Gallery);
        SetUndefined(result);
    } else if (word == "preferences") {
        run(PopupCommand::Preferences);
        SetInteger(result, controller.Preferences().shortcutChoice);
    } else if (word == "logo") {
        run(PopupCommand::Logo);
        SetUndefined(result);
    } else {
        return false;
    }
    return true;
}

} // namespace

void SetToolbarIconScriptSource(ToolbarIconScriptSource source) {
    toolbarIconSource = source;
}

std::string BuildStatusScript() {
    std::string script = "var shortcutValue = " + std::to_string(StoredShortcutChoice()) + ";\n";
    if (toolbarIconSource != nullptr)
        script += toolbarIconSource();
    return script;
}

long RunScriptCommand(EffectsPopup* controller, TaggedData* argv, long argc, TaggedData* result) {
    if (argc <= 0 || argv == nullptr || result == nullptr || argv[0].type != kTypeString)
        return ScriptBadArguments;
    const std::string word = argv[0].data.string != nullptr ? argv[0].data.string : "";

    if (controller != nullptr) {
        long status = ScriptOk;
        if (RunControllerCommand(*controller, word, argv, argc, result, status))
            return status;
    }
    if (word == "requeststatus") {
        result->data.string = EngineCopy(BuildStatusScript());
        result->type = result->data.string != nullptr ? kTypeScript : kTypeUndefined;
        return ScriptOk;
    }
    SetInteger(result, -1);
    return ScriptOk;
}
