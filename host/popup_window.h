#pragma once

// What the host controller needs of the search popup window. The window itself lives in popup/;
// the controller only creates it through the registered factory and talks to it through this
// interface, so the host side builds and runs (windowless) without the popup. (It does use the
// toolkit's bitmaps and dialogs for frame captures.)

#include "host/popup_command.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct EffectData;
struct PreferencesData;
class EffectsPopup;

class PopupWindow {
public:
    virtual ~PopupWindow() = default;

    // Shows the popup or runs one of its tools (PopupCommand). The names are those of the current
    // project, active composition and active layer: empty when there is none, "Unknown" when it has
    // no name. Returns the news count for NewsCount, NoCommandResult otherwise.
    virtual uint32_t Show(const std::string& projectName, const std::string& compName,
                          const std::string& layerName, PopupCommand command) = 0;
    virtual void Hide() = 0;
    virtual bool IsShown() const = 0;
    // Writes the user's search data files (aliases, blacklist, shortcuts).
    virtual void WriteFile() = 0;
    // Replaces the window's catalogue with a copy; the user's lists are read again against it.
    virtual void SetEffectData(const std::vector<EffectData>& catalogue) = 0;
    // A capture was written to the capture folder: a shown gallery lists it at once.
    virtual void RefreshGallery() {}
};

// Creates the popup window, which has no parent (the host's windows are not ours). The window keeps
// prefs and controller by reference for its lifetime and reports a chosen entry with
// EffectsPopup::ApplyEffect and tool requests with EffectsPopup::CustomEvent.
using PopupWindowFactory = std::unique_ptr<PopupWindow> (*)(PreferencesData& prefs, EffectsPopup& controller);

// Registers the factory that the controller's first idle tick uses. Until one is registered the
// controller has no popup window: commands answer NoCommandResult and nothing is shown.
void SetPopupWindowFactory(PopupWindowFactory factory);
PopupWindowFactory GetPopupWindowFactory();
