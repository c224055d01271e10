#pragma once

// The simulated host's in-memory project: what a real host would answer through its suites.

#include "host/sdk/ae_basic.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace hostsim {

struct Effect {
    AEGP_InstalledEffectKey key = 0;
    std::string name;     // UTF-8; served to the plug-in in Mac Roman, as the host does
    std::string category; // served byte for byte
    std::string matchName;
};

struct Layer {
    std::string name; // empty: the layer shows its source's name
    AEGP_ObjectType type = AEGP_ObjectType_AV;
    int32_t sourceItem = 0; // item id, 0 for none
    bool selected = false;
    A_Time time{0, 1};
    std::vector<AEGP_InstalledEffectKey> effects; // applied effects, in order
    std::vector<std::string> presets;             // preset files applied by script
};

struct Item {
    int32_t id = 0;
    AEGP_ItemType type = AEGP_ItemType_FOOTAGE;
    std::string name;
    A_long width = 0, height = 0;
    A_Ratio pixelAspect{1, 1};
    A_Time time{0, 1};
    std::vector<std::unique_ptr<Layer>> layers; // compositions only
    // Compositions: the resolution the viewer renders at (2 = half), and whether the most recently
    // used view shows a colour-managed transform of the working space.
    A_short downsample = 1;
    bool viewColorTransform = false;
};

struct Project {
    std::string name; // as the host reports it, extension included
    std::string path;
    AEGP_ProjBitDepth bitDepth = AEGP_ProjBitDepth_8;
    int32_t activeItem = 0; // item id, 0 for none
    std::vector<std::unique_ptr<Item>> items;
};

struct MenuItem {
    std::string title;
    bool enabled = true;
    bool hasSubmenu = false;
    std::vector<std::unique_ptr<MenuItem>> submenu;
    AEGP_InstalledEffectKey effectKey = 0; // the effect this item applies, 0 for none
};

struct Model {
    std::vector<std::unique_ptr<Project>> projects;
    std::vector<Effect> effects; // in the host's enumeration order

    int32_t apiMajor = 115, apiMinor = 0;
    bool suppressInteractiveUI = false;
    bool active = true;
    // The host's installation: <installFolder>/<bundle>/Contents/MacOS/<executable>, with Presets/
    // beside the bundle. Paths relative to the simulation's root folder.
    std::string installFolder = "Applications/Adobe After Effects CC 2018";
    std::string bundle = "Adobe After Effects CC 2018.app";
    std::string executable = "After Effects";
    // The user's preset folder is Documents/Adobe/<userPresetsFolder>/User Presets.
    std::string userPresetsFolder = "After Effects CC 2018";
    std::vector<std::string> hostPresets; // relative to Presets/
    std::vector<std::string> userPresets; // relative to User Presets/

    // The Effect menu sits at this index of the main menu; categories listed here are disabled.
    int effectMenuIndex = 5;
    std::vector<std::string> disabledCategories;
    // When false, choosing an effect menu item does nothing (a host busy with a modal state).
    bool menuActionsApply = true;

    // The script engine's answer to "app.project.bitsPerChannel".
    std::string bitsPerChannel = "32";

    // The description of the working colour space's profile.
    std::string workingSpaceProfile = "sRGB IEC61966-2.1";
};

// Reads a project file (JSON). Throws std::runtime_error with a message on malformed input: the
// simulated host is a test and demo tool, and a broken project file is the tester's to fix.
Model LoadModel(const std::string& jsonText);
Model LoadModelFile(const std::string& path);

// Reads the installed-effect list of a tab-separated file (category, display name, match name;
// lines starting with "#" skipped). Keys are assigned in order from 1. Empty when unreadable.
std::vector<Effect> LoadEffectsTable(const std::string& path);

// Encodes UTF-8 text in Mac Roman, the host's legacy encoding; characters it lacks become "?".
std::string Utf8ToMacRoman(const std::string& text);
// Encodes UTF-8 text in UTF-16, as the host's newer suites hand text out; no terminator.
std::vector<uint16_t> Utf8ToUtf16(const std::string& text);

} // namespace hostsim
