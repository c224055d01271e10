// The simulated host on screen: an AppKit application that loads the plug-in into a simulated
// session and runs it the way the host does. Its main window shows the project (compositions,
// layers, the selection and what each layer has applied) and a script console; its main menu has
// the Effect menu at index 5, built from the project; a 30 ms timer calls the idle hooks; quitting
// runs the death hooks. Every change is written to the session record (a JSON file) for tests.
//
//   hostsim-app [--project file.json] [--plugins folder] [--root folder] [--news-url url]
//               [--record file.json] [--control]
//
// With --control the application also reads lines from standard input, one command each:
//   menu <category>/<effect>   performs that Effect menu item, as clicking it does
//   console <word> [number]    runs the word in the script console
//   select <layer>             selects that layer of the active composition (alone)
//   activate                   asks to become the active application
//   deactivate                 gives up being the active one, as when the artist switches away
//   quit                       quits (death hooks, record written)

#import <AppKit/AppKit.h>

#include "hostsim/app/appkit_host.h"
#include "hostsim/app/event_timing.h"
#include "hostsim/app/host_app_options.h"
#include "hostsim/sim_host.h"
#include "hostsim/sim_record.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <memory>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace {

volatile std::sig_atomic_t quitRequested = 0;

void RequestQuit(int) { quitRequested = 1; }

NSString *ToNS(const std::string &text) {
    NSString *s = [NSString stringWithUTF8String:text.c_str()];
    return s != nil ? s : @"?";
}

std::string FromNS(NSString *text) {
    const char *utf8 = text != nil ? [text UTF8String] : nullptr;
    return utf8 != nullptr ? utf8 : "";
}

// The item of menu titled title, or nil.
NSMenuItem *ItemTitled(NSMenu *menu, const std::string &title) {
    NSInteger count = [menu numberOfItems];
    for (NSInteger i = 0; i < count; ++i) {
        NSMenuItem *item = [menu itemAtIndex:i];
        if (FromNS([item title]) == title)
            return item;
    }
    return nil;
}

// Keeps the latest of list, up to limit entries.
template <typename T> void AppendBounded(std::vector<T> &list, std::vector<T> &&more, size_t limit) {
    list.insert(list.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    if (list.size() > limit)
        list.erase(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(list.size() - limit));
}

} // namespace

// The controller's C++ state: Objective-C instance variables do not run C++ constructors.
struct HostAppSession {
    HostAppOptions options;
    std::unique_ptr<hostsim::SimHost> host;
    hostsim::SessionState state;
    std::string shownOutline;  // the outline on screen
    std::string writtenRecord; // the record last written
    std::string controlBuffer; // control input up to an incomplete line
    long ticks = 0;
};

@interface HostAppController : NSObject {
    HostAppSession *s;
    NSWindow *window;
    NSTextView *outlineView;
    NSTextField *consoleField;
    NSTextView *consoleOutput;
    NSTimer *idleTimer;
}
- (id)initWithHostOptions:(const HostAppOptions &)hostOptions;
- (BOOL)startSession;
- (void)buildMainMenu;
- (void)refresh;
@end

namespace {
// Menu choices change the project: the window and the record follow.
void RefreshController(void *controller) { [static_cast<HostAppController *>(controller) refresh]; }

// A read-only text view in a scroll view that the window's content owns.
NSTextView *AddTextPane(NSView *content, NSRect frame, unsigned int resizing, CGFloat fontSize) {
    NSScrollView *scroll = [[[NSScrollView alloc] initWithFrame:frame] autorelease];
    [scroll setHasVerticalScroller:YES];
    [scroll setAutoresizingMask:resizing];
    NSTextView *text = [[[NSTextView alloc] initWithFrame:[[scroll contentView] bounds]] autorelease];
    [text setEditable:NO];
    [text setFont:[NSFont userFixedPitchFontOfSize:fontSize]];
    [scroll setDocumentView:text];
    [content addSubview:scroll];
    return text;
}
} // namespace

@implementation HostAppController

- (id)initWithHostOptions:(const HostAppOptions &)hostOptions {
    self = [super init];
    if (self != nil) {
        s = new HostAppSession;
        s->options = hostOptions;
    }
    return self;
}

- (void)dealloc {
    [idleTimer invalidate];
    [idleTimer release];
    [window release];
    delete s;
    [super dealloc];
}

- (BOOL)startSession {
    try {
        s->host =
            std::make_unique<hostsim::SimHost>(hostsim::LoadModelFile(s->options.project), s->options.root);
    } catch (const std::exception &e) {
        std::fprintf(stderr, "hostsim-app: %s\n", e.what());
        return NO;
    }
    s->host->Materialize();
    if (!s->options.newsUrl.empty())
        setenv("QUILLO_NEWS_URL", s->options.newsUrl.c_str(), 1);
    if (!s->host->LoadPlugins(s->options.plugins)) {
        std::fprintf(stderr, "hostsim-app: %s\n", s->host->loadError.c_str());
        return NO;
    }
    s->host->ScriptInitialize();
    s->host->StartPlugin();
    return YES;
}

// ---- The main menu: the host's menus, the Effect menu built from the project's effects.

- (void)buildMainMenu {
    InstallHostMainMenu(*s->host, RefreshController, self);
}

// ---- The main window: the project outline above, the script console below.

- (void)buildWindow {
    // Beside the main menu, which sits at the screen's top left where there is no menu bar.
    const NSRect frame = NSMakeRect(170, 120, 620, 560);
    window = [[NSWindow alloc] initWithContentRect:frame
                                         styleMask:NSTitledWindowMask | NSClosableWindowMask |
                                                   NSMiniaturizableWindowMask | NSResizableWindowMask
                                           backing:NSBackingStoreBuffered
                                             defer:NO];
    const hostsim::Project *project = s->host->CurrentProject();
    [window setTitle:ToNS("Simulated Host - " +
                          (project != nullptr ? project->name : std::string("no project")))];
    [window setReleasedWhenClosed:NO];
    NSView *content = [window contentView];

    outlineView =
        AddTextPane(content, NSMakeRect(10, 170, 600, 380), NSViewWidthSizable | NSViewHeightSizable, 12);

    NSTextField *label = [[[NSTextField alloc] initWithFrame:NSMakeRect(10, 140, 110, 22)] autorelease];
    [label setStringValue:@"Script console:"];
    [label setEditable:NO];
    [label setBezeled:NO];
    [label setDrawsBackground:NO];
    [label setAutoresizingMask:NSViewMaxYMargin];
    [content addSubview:label];

    consoleField = [[[NSTextField alloc] initWithFrame:NSMakeRect(125, 140, 400, 22)] autorelease];
    [consoleField setTarget:self];
    [consoleField setAction:@selector(runConsole:)];
    [consoleField setAutoresizingMask:NSViewWidthSizable | NSViewMaxYMargin];
    [content addSubview:consoleField];

    NSButton *run = [[[NSButton alloc] initWithFrame:NSMakeRect(530, 138, 80, 26)] autorelease];
    [run setTitle:@"execute"];
    [run setTarget:self];
    [run setAction:@selector(runConsole:)];
    [run setAutoresizingMask:NSViewMinXMargin | NSViewMaxYMargin];
    [content addSubview:run];

    consoleOutput =
        AddTextPane(content, NSMakeRect(10, 10, 600, 120), NSViewWidthSizable | NSViewMaxYMargin, 11);

    [window setInitialFirstResponder:consoleField];
    [window makeKeyAndOrderFront:nil];
    [window makeFirstResponder:consoleField];
}

// ---- The script console: a word (and an optional number) handed to the plug-in's execute.

- (void)runConsoleLine:(const std::string &)line {
    hostsim::ConsoleCall call = hostsim::RunConsoleLine(*s->host, line);
    if (call.word.empty())
        return;
    s->state.console.push_back(call);

    std::string shown = "execute(\"" + call.word + "\") -> " + std::to_string(call.status) + ", ";
    // A status script holds long hexadecimal image strings: its first lines tell enough.
    shown += call.result.size() > 400
                 ? call.result.substr(0, 400) + "... (" + std::to_string(call.result.size()) + " characters)"
                 : call.result;
    NSString *text = ToNS(shown + "\n");
    [[consoleOutput textStorage]
        appendAttributedString:[[[NSAttributedString alloc] initWithString:text] autorelease]];
    [consoleOutput scrollRangeToVisible:NSMakeRange([[consoleOutput string] length], 0)];
    [self refresh];
}

- (void)runConsole:(id)sender {
    (void)sender;
    const std::string line = FromNS([consoleField stringValue]);
    [consoleField setStringValue:@""];
    [self runConsoleLine:line];
}

// ---- Control lines from standard input.

- (void)performMenuPath:(const std::string &)path {
    const size_t slash = path.find('/');
    NSMenu *mainMenu = [NSApp mainMenu];
    if (slash == std::string::npos || [mainMenu numberOfItems] < 6)
        return;
    NSMenuItem *effectItem = ItemTitled(mainMenu, "Effect");
    NSMenuItem *category = effectItem != nil ? ItemTitled([effectItem submenu], path.substr(0, slash)) : nil;
    NSMenu *categoryMenu = [category hasSubmenu] ? [category submenu] : nil;
    NSMenuItem *item = categoryMenu != nil ? ItemTitled(categoryMenu, path.substr(slash + 1)) : nil;
    if (item == nil || ![category isEnabled]) {
        std::fprintf(stderr, "hostsim-app: no enabled menu item %s\n", path.c_str());
        return;
    }
    [categoryMenu performActionForItemAtIndex:[categoryMenu indexOfItem:item]];
}

- (void)selectLayer:(const std::string &)name {
    hostsim::Item *comp = s->host->ActiveItem();
    if (comp == nullptr)
        return;
    for (auto &layer : comp->layers) {
        const hostsim::Item *source = s->host->FindItem(layer->sourceItem);
        layer->selected =
            layer->name == name || (layer->name.empty() && source != nullptr && source->name == name);
    }
    [self refresh];
}

- (void)runControlLine:(const std::string &)line {
    const size_t space = line.find(' ');
    const std::string command = line.substr(0, space);
    const std::string argument = space == std::string::npos ? "" : line.substr(space + 1);
    if (command == "menu")
        [self performMenuPath:argument];
    else if (command == "console")
        [self runConsoleLine:argument];
    else if (command == "select")
        [self selectLayer:argument];
    else if (command == "activate")
        [NSApp activateIgnoringOtherApps:YES];
    else if (command == "deactivate")
        [NSApp deactivate];
    else if (command == "quit")
        [NSApp terminate:nil];
    else if (!command.empty())
        std::fprintf(stderr, "hostsim-app: unknown control line: %s\n", line.c_str());
}

- (void)readControlLines {
    char buffer[4096];
    for (;;) {
        const ssize_t n = read(STDIN_FILENO, buffer, sizeof buffer);
        if (n <= 0)
            break;
        s->controlBuffer.append(buffer, static_cast<size_t>(n));
    }
    for (size_t end; (end = s->controlBuffer.find('\n')) != std::string::npos;) {
        const std::string line = s->controlBuffer.substr(0, end);
        s->controlBuffer.erase(0, end + 1);
        [self runControlLine:line];
    }
}

// ---- The host's idle routine and the record.

- (void)refresh {
    s->state.active = [NSApp isActive];
    AppendBounded(s->state.keys, TakeKeyTimings(), 200);
    AppendBounded(s->state.shownWindows, TakeShownWindows(), 100);
    s->state.windows = ListVisibleWindows();
    const std::string outline = hostsim::ProjectOutline(*s->host);
    if (outline != s->shownOutline) {
        s->shownOutline = outline;
        [outlineView setString:ToNS(outline)];
    }
    const std::string record = hostsim::SessionRecord(*s->host, s->state);
    if (record != s->writtenRecord && hostsim::WriteFileAtomically(s->options.record, record))
        s->writtenRecord = record;
}

- (void)idle:(NSTimer *)timer {
    (void)timer;
    if (quitRequested) {
        quitRequested = 0;
        [NSApp terminate:nil];
        return;
    }
    s->host->RunIdle(1);
    // The tick count reaches the record about once a second; it shows that idle calls go on.
    if (++s->ticks % 32 == 1)
        s->state.idleTicks = s->ticks;
    if (s->options.control)
        [self readControlLines];
    [self refresh];
}

- (void)applicationDidFinishLaunching:(NSNotification *)note {
    (void)note;
    [self buildWindow];
    [NSApp activateIgnoringOtherApps:YES];
    if (s->options.control)
        fcntl(STDIN_FILENO, F_SETFL, fcntl(STDIN_FILENO, F_GETFL) | O_NONBLOCK);
    // GNUstep installs handlers of its own while the application starts, which quit from inside the
    // signal handler: a death hook run there can deadlock on the X connection the interrupted code
    // held. Ours only note the request; the idle routine quits.
    std::signal(SIGTERM, RequestQuit);
    std::signal(SIGINT, RequestQuit);
    idleTimer = [[NSTimer scheduledTimerWithTimeInterval:0.03
                                                  target:self
                                                selector:@selector(idle:)
                                                userInfo:nil
                                                 repeats:YES] retain];
    [self refresh];
    std::printf("hostsim-app: session record %s, files under %s\n", s->options.record.c_str(),
                s->options.root.c_str());
    std::fflush(stdout);
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication *)app {
    (void)app;
    return YES;
}

- (void)applicationWillTerminate:(NSNotification *)note {
    (void)note;
    [idleTimer invalidate];
    s->host->RunDeath();
    ++s->state.deathHooksRun;
    s->host->ScriptTerminate();
    [self refresh];
}

@end

int main(int argc, char **argv) {
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    const HostAppOptions options = ParseHostAppOptions(argc, argv);
    if (!options.ok)
        return 2;
    std::signal(SIGTERM, RequestQuit);
    std::signal(SIGINT, RequestQuit);
    if (!StartAppKitApplication()) {
        std::fprintf(stderr, "hostsim-app: no window server (is DISPLAY set?)\n");
        return 1;
    }
    HostAppController *controller = [[HostAppController alloc] initWithHostOptions:options];
    if (![controller startSession])
        return 1;
    [controller buildMainMenu];
    [NSApp setDelegate:controller];
    [NSApp run];
    [controller release];
    [pool release];
    return 0;
}
