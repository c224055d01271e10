#pragma once

// The application that loads the plug-in, as the command-line build of the plug-in reaches it (the
// AppKit build walks the real main menu instead). A process that plays the host exports a function
// of this name returning the table; the plug-in looks it up at run time, so nothing in the plug-in
// links against the process that loads it.

extern "C" {

typedef struct NativeMenu NativeMenu;
typedef struct NativeMenuItem NativeMenuItem;

typedef struct NativeApplication {
    // Non-zero when the application is the frontmost one.
    int (*is_active)(void);
    // The application's executable, as the platform reports it; null when unknown.
    const char* (*executable_path)(void);
    NativeMenu* (*main_menu)(void);
    int (*menu_item_count)(NativeMenu* menu);
    NativeMenuItem* (*menu_item_at)(NativeMenu* menu, int index);
    const char* (*item_title)(NativeMenuItem* item); // UTF-8
    int (*item_enabled)(NativeMenuItem* item);
    NativeMenu* (*item_submenu)(NativeMenuItem* item); // null when the item has none
    // Sends the item's action to its target, as choosing it would.
    void (*item_send_action)(NativeMenuItem* item);
} NativeApplication;

typedef const NativeApplication* (*NativeApplicationLookup)(void);

} // extern "C"

#define QUILLO_NATIVE_APPLICATION_SYMBOL "QuilloNativeApplication"

// The table of the process that loaded the plug-in, looked up on every call (the process may
// install it after the plug-in loads); null when the process exports none.
const NativeApplication* FindNativeApplication();
