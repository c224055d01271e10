#include "nimbit/ui/native_file_browser.h"

#import <AppKit/AppKit.h>

#include "nimbit/ui/cocoa/cocoa_util.h"
#include "nimbit/ui/cocoa/file_filters.h"
#include "nimbit/ui/cocoa/native_app.h"

// The open, save and folder panels, run modally. The panels are AppKit's own windows; the parent
// window only matters for where they appear.

namespace nimbit::file_browser {

namespace {

NSArray *ns_types(const std::vector<file_filter> &filters) {
    const std::vector<std::string> types = ui::cocoa::allowed_file_types(filters);
    if (types.empty())
        return nil; // every type
    NSMutableArray *list = [NSMutableArray arrayWithCapacity:types.size()];
    for (const std::string &t : types)
        [list addObject:ui::cocoa::to_ns_string(t)];
    return list;
}

file_path path_of(NSURL *url) { return file_path(ui::cocoa::to_utf8([url path])); }

} // namespace

std::vector<file_path> file_dialog(const ui::window *parent, dialog_type type, const std::string &title,
                                   const std::vector<file_filter> &filters, bool allow_multiple,
                                   const std::string &default_name) {
    (void)parent;
    std::vector<file_path> chosen;
    if (!ui::cocoa::start_application())
        return chosen;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    @try {
        NSArray *types = ns_types(filters);
        if (type == dialog_type::open) {
            NSOpenPanel *panel = [NSOpenPanel openPanel];
            [panel setPrompt:ui::cocoa::to_ns_string(title)];
            [panel setCanChooseFiles:YES];
            [panel setCanChooseDirectories:NO];
            [panel setCanCreateDirectories:NO];
            [panel setAllowsMultipleSelection:allow_multiple ? YES : NO];
            [panel setAllowedFileTypes:types];
            if ([panel runModal] == NSFileHandlingPanelOKButton) {
                NSArray *urls = [panel URLs];
                for (NSUInteger i = 0; i < [urls count]; ++i)
                    chosen.push_back(path_of([urls objectAtIndex:i]));
            }
        } else {
            NSSavePanel *panel = [NSSavePanel savePanel];
            [panel setPrompt:ui::cocoa::to_ns_string(title)];
            [panel setCanCreateDirectories:YES];
            [panel setAllowedFileTypes:types];
            [panel setNameFieldStringValue:ui::cocoa::to_ns_string(default_name)];
            if ([panel runModal] == NSFileHandlingPanelOKButton && [panel URL] != nil)
                chosen.push_back(path_of([panel URL]));
        }
    } @catch (NSException *e) {
        NSLog(@"file_dialog: %@", [e reason]);
        chosen.clear();
    }
    [pool release];
    return chosen;
}

file_path folder_select_dialog(const ui::window *parent, const std::string &title,
                               const file_path &start_folder) {
    (void)parent;
    file_path chosen;
    if (!ui::cocoa::start_application())
        return chosen;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    @try {
        NSOpenPanel *panel = [NSOpenPanel openPanel];
        [panel setPrompt:ui::cocoa::to_ns_string(title)];
        [panel setCanChooseFiles:NO];
        [panel setCanChooseDirectories:YES];
        [panel setCanCreateDirectories:YES];
        [panel setAllowsMultipleSelection:NO];
        if (!start_folder.empty())
            [panel setDirectoryURL:[NSURL fileURLWithPath:ui::cocoa::to_ns_string(start_folder.to_string())]];
        if ([panel runModal] == NSFileHandlingPanelOKButton && [[panel URLs] count] > 0)
            chosen = path_of([[panel URLs] objectAtIndex:0]);
    } @catch (NSException *e) {
        NSLog(@"folder_select_dialog: %@", [e reason]);
    }
    [pool release];
    return chosen;
}

} // namespace nimbit::file_browser
