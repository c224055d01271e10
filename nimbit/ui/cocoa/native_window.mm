#include "nimbit/ui/cocoa/native_window.h"

#import <AppKit/AppKit.h>

#include "nimbit/ui/cocoa/cocoa_util.h"
#include "nimbit/ui/cocoa/input_state.h"
#include "nimbit/ui/cocoa/key_map.h"
#include "nimbit/ui/cocoa/native_app.h"
#include "nimbit/ui/cocoa/native_bitmap.h"
#include "nimbit/ui/event_payload.h"
#include "nimbit/ui/key_codes.h"
#include "nimbit/ui/native_input.h"
#include "nimbit/utils/assert.h"

#include <algorithm>
#include <cmath>
#include <cwctype>

using nimbit::ui::event_type;
using nimbit::ui::cocoa::cocoa_window;

namespace {

// Whether the Command key is held during a key event. Command combinations are shortcuts, never
// text, so they skip text input.
bool command_held(NSEvent *event) {
#ifdef GNUSTEP
    // GNUstep: which X modifier AppKit calls Command depends on its defaults, so ask the keyboard
    // about the keys the key map names Command.
    (void)event;
    return nimbit::ui::cocoa::is_virtual_key_down(nimbit::ui::virtual_key::command) ||
           nimbit::ui::cocoa::is_virtual_key_down(nimbit::ui::virtual_key::right_command);
#else
    return ([event modifierFlags] & NSEventModifierFlagCommand) != 0;
#endif
}

// The upper-cased first character of the key, ignoring modifiers; 0 when the key has none.
uint32_t key_character(NSEvent *event) {
    NSString *chars = [event charactersIgnoringModifiers];
    if ([chars length] == 0)
        return 0;
    return static_cast<uint32_t>(std::towupper(static_cast<wint_t>([chars characterAtIndex:0])));
}

} // namespace

// --- NativeWindow -----------------------------------------------------------------------------------

@interface NativeWindow : NSWindow {
  @public
    BOOL popupStyle;
}
@end

@implementation NativeWindow
// Borderless popups must take the keyboard too (AppKit refuses them by default).
- (BOOL)canBecomeKeyWindow {
    return YES;
}
- (BOOL)canBecomeMainWindow {
    return !popupStyle;
}
@end

// --- NativeView -------------------------------------------------------------------------------------

@interface NativeView : NSView {
  @public
    cocoa_window *host;
    NSTrackingRectTag trackingTag;
}
- (void)updateTracking;
@end

@implementation NativeView

- (BOOL)isFlipped {
    return YES;
}
- (BOOL)isOpaque {
    return YES;
}
- (BOOL)acceptsFirstResponder {
    return YES;
}
- (BOOL)acceptsFirstMouse:(NSEvent *)event {
    (void)event;
    return YES;
}

- (void)drawRect:(NSRect)rect {
    if (host == nullptr)
        return;
    const int left = static_cast<int>(std::floor(rect.origin.x));
    const int top = static_cast<int>(std::floor(rect.origin.y));
    const int right = static_cast<int>(std::ceil(rect.origin.x + rect.size.width));
    const int bottom = static_cast<int>(std::ceil(rect.origin.y + rect.size.height));
    host->paint_rect({left, top, right - left, bottom - top});
}

// Enter and exit come from a tracking rectangle over the whole view (the form both AppKit and
// GNUstep offer); it is renewed whenever the view changes size or window.
- (void)updateTracking {
    if (trackingTag != 0)
        [self removeTrackingRect:trackingTag];
    trackingTag = 0;
    if ([self window] != nil)
        trackingTag = [self addTrackingRect:[self bounds] owner:self userData:NULL assumeInside:NO];
}
// Files dragged out of the view are copied by whoever takes them; inside the application nothing
// takes them.
- (NSDragOperation)draggingSourceOperationMaskForLocal:(BOOL)local {
    return local ? NSDragOperationNone : NSDragOperationCopy;
}
- (void)setFrameSize:(NSSize)size {
    [super setFrameSize:size];
    [self updateTracking];
}
- (void)viewDidMoveToWindow {
    [self updateTracking];
}

// Sends one event with the pointer pinned to where the AppKit event happened.
- (void)sendMouse:(NSEvent *)event type:(event_type)type data:(unsigned long long)data {
    if (host == nullptr)
        return;
    NSRect at = NSMakeRect([event locationInWindow].x, [event locationInWindow].y, 0, 0);
    at = [[self window] convertRectToScreen:at];
    nimbit::ui::cocoa::begin_pointer_event(nimbit::ui::cocoa::from_ns_screen_point(at.origin));
    [self retain]; // the handler may destroy the window and with it this view
    host->dispatch(type, data);
    nimbit::ui::cocoa::end_pointer_event();
    [self autorelease];
}

- (void)mouseDown:(NSEvent *)event {
    if ([event clickCount] == 2)
        [self sendMouse:event type:event_type::mouse_dbl_click data:0];
    else
        [self sendMouse:event type:event_type::mouse_down data:0];
}
- (void)rightMouseDown:(NSEvent *)event {
    [self sendMouse:event type:event_type::mouse_down data:2];
}
- (void)otherMouseDown:(NSEvent *)event {
    [self sendMouse:event type:event_type::mouse_down data:1];
}
- (void)mouseUp:(NSEvent *)event {
    [self sendMouse:event type:event_type::mouse_up data:0];
}
- (void)rightMouseUp:(NSEvent *)event {
    [self sendMouse:event type:event_type::mouse_up data:2];
}
- (void)otherMouseUp:(NSEvent *)event {
    [self sendMouse:event type:event_type::mouse_up data:1];
}
- (void)mouseMoved:(NSEvent *)event {
    [self sendMouse:event type:event_type::mouse_move data:0];
}
- (void)mouseDragged:(NSEvent *)event {
    [self sendMouse:event type:event_type::mouse_move data:0];
}
- (void)otherMouseDragged:(NSEvent *)event {
    [self sendMouse:event type:event_type::mouse_move data:0];
}
- (void)rightMouseDragged:(NSEvent *)event {
    [self sendMouse:event type:event_type::mouse_move data:2];
}
- (void)mouseEntered:(NSEvent *)event {
    (void)event;
    if (host)
        host->get_owner().set_mouse_inside(true);
}
- (void)mouseExited:(NSEvent *)event {
    if (host == nullptr)
        return;
    host->get_owner().set_mouse_inside(false);
    [self sendMouse:event type:event_type::mouse_leave data:0];
}
- (void)scrollWheel:(NSEvent *)event {
    const double delta = static_cast<double>([event deltaY]) * 40.0;
    if (delta != 0)
        [self sendMouse:event type:event_type::mouse_wheel data:nimbit::ui::pack_wheel(delta)];
}

- (void)keyDown:(NSEvent *)event {
    if (host == nullptr)
        return;
    [self retain];
    const int key = nimbit::ui::cocoa::virtual_key_from_event_code([event keyCode]);
    const uint32_t upper = key_character(event);
    // Without a character the high half is -1.
    host->dispatch(event_type::key_down_raw,
                   nimbit::ui::pack_pair(key, upper != 0 ? static_cast<int32_t>(upper) : -1));
    if (host)
        host->dispatch(event_type::key_down, upper);
    // Text and editing commands: insertText: and doCommandBySelector: below.
    if (host && !command_held(event))
        [self interpretKeyEvents:[NSArray arrayWithObject:event]];
    [self autorelease];
}
- (void)keyUp:(NSEvent *)event {
    if (host)
        host->dispatch(event_type::key_up, key_character(event));
}
// A modifier went down or up: a press is reported as a raw key without a character so that a
// shortcut field can record it.
- (void)flagsChanged:(NSEvent *)event {
    if (host == nullptr)
        return;
    const int key = nimbit::ui::cocoa::virtual_key_from_event_code([event keyCode]);
    if (key >= 0 && nimbit::ui::cocoa::is_virtual_key_down(key))
        host->dispatch(event_type::key_down_raw, nimbit::ui::pack_pair(key, -1));
}

// One key_char per UTF-16 unit.
- (void)insertText:(id)text {
    NSString *s = [text isKindOfClass:[NSAttributedString class]] ? [text string] : text;
    const NSUInteger n = [s length];
    for (NSUInteger i = 0; i < n && host != nullptr; ++i)
        host->dispatch(event_type::key_char, [s characterAtIndex:i]);
}
// Editing commands. AppKit hands them to doCommandBySelector:, GNUstep's key bindings call the
// action methods directly; both paths end here.
- (void)sendCommandCharacter:(unsigned long long)code {
    if (host != nullptr)
        host->dispatch(event_type::key_char, code);
}
- (void)deleteBackward:(id)sender {
    (void)sender;
    [self sendCommandCharacter:127];
}
- (void)insertTab:(id)sender {
    (void)sender;
    [self sendCommandCharacter:9];
}
- (void)insertBacktab:(id)sender {
    (void)sender;
    [self sendCommandCharacter:9];
}
- (void)insertNewline:(id)sender {
    (void)sender;
    [self sendCommandCharacter:13];
}
- (void)insertLineBreak:(id)sender {
    (void)sender;
    [self sendCommandCharacter:13];
}
- (void)insertNewlineIgnoringFieldEditor:(id)sender {
    (void)sender;
    [self sendCommandCharacter:13];
}
- (void)cancelOperation:(id)sender {
    (void)sender;
    [self sendCommandCharacter:27];
}
// GNUstep binds Escape to complete:.
- (void)complete:(id)sender {
    (void)sender;
    [self sendCommandCharacter:27];
}
- (void)doCommandBySelector:(SEL)selector {
    // Only the commands above; moving, selecting and the rest are the toolkit's, from key_down.
    // Selectors are compared by name: the GNU runtime has several SELs for one name.
    static const SEL commands[] = {@selector(deleteBackward:),  @selector(insertTab:),
                                   @selector(insertBacktab:),   @selector(insertNewline:),
                                   @selector(insertLineBreak:), @selector(insertNewlineIgnoringFieldEditor:),
                                   @selector(cancelOperation:), @selector(complete:)};
    for (SEL command : commands)
        if (sel_isEqual(selector, command)) {
            [self performSelector:command withObject:self];
            return;
        }
}

@end

// --- NativeWindowDelegate -----------------------------------------------------------------------------

@interface NativeWindowDelegate : NSObject <NSWindowDelegate> {
  @public
    cocoa_window *host;
}
@end

@implementation NativeWindowDelegate
- (void)windowDidBecomeKey:(NSNotification *)note {
    (void)note;
    if (host)
        host->dispatch(event_type::focus_gained, 0);
}
- (void)windowDidResignKey:(NSNotification *)note {
    (void)note;
    if (host)
        host->dispatch(event_type::focus_lost, 0);
}
- (void)windowDidResize:(NSNotification *)note {
    (void)note;
    if (host == nullptr)
        return;
    const NSSize size = [[host->get_ns_window() contentView] frame].size;
    host->dispatch(event_type::resize, nimbit::ui::pack_size({static_cast<int>(std::lround(size.width)),
                                                              static_cast<int>(std::lround(size.height))}));
}
- (BOOL)windowShouldClose:(id)sender {
    (void)sender;
    if (host)
        host->close_requested();
    return NO; // the toolkit window decides and hides itself
}
@end

// --- timers ---------------------------------------------------------------------------------------

@interface NativeTimerTarget : NSObject {
  @public
    cocoa_window *host;
    uint32_t nativeId;
}
- (void)fire:(NSTimer *)timer;
@end

@implementation NativeTimerTarget
- (void)fire:(NSTimer *)timer {
    (void)timer;
    if (host)
        host->timer_fired(nativeId);
}
@end

namespace nimbit::ui {

std::unique_ptr<native_window> create_native_window(window &, native_window_events &events) {
    return std::make_unique<cocoa::cocoa_window>(events);
}

namespace cocoa {

cocoa_window::cocoa_window(native_window_events &owner) : owner(owner) {}

cocoa_window::~cocoa_window() {
    stop_all_timers();
    if (modalSession) {
        [NSApp endModalSession:static_cast<NSModalSession>(modalSession)];
        modalSession = nullptr;
    }
    if (view)
        view->host = nullptr;
    if (delegate)
        delegate->host = nullptr;
    if (ns_window) {
        [ns_window setDelegate:nil];
        [ns_window orderOut:nil];
        // The window may be in the middle of handling the event that destroyed its owner.
        [ns_window autorelease];
    }
    [view release];
    [delegate release];
}

void cocoa_window::create(std::string_view title, const ivec4 &frame, uint32_t style, native_window *parent) {
    (void)parent;
    start_application();
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSUInteger mask = NSBorderlessWindowMask;
    if (!(style & window_style_borderless)) {
        if (style & window_style_titled)
            mask |= NSTitledWindowMask | NSClosableWindowMask | NSMiniaturizableWindowMask;
        if (style & window_style_resizable)
            mask |= NSResizableWindowMask;
    }
    const NSRect frame_rect =
        to_ns_screen_rect({frame.x, frame.y, std::max(frame.w, 1), std::max(frame.h, 1)});
    const NSRect content = [NSWindow contentRectForFrameRect:frame_rect styleMask:mask];
    ns_window = [[NativeWindow alloc] initWithContentRect:content
                                                styleMask:mask
                                                  backing:NSBackingStoreBuffered
                                                    defer:NO];
    ns_window->popupStyle = (style & window_style_borderless) != 0;
    [ns_window setReleasedWhenClosed:NO];
    [ns_window setTitle:to_ns_string(title)];
    [ns_window setAcceptsMouseMovedEvents:YES];
    if (style & window_style_floating)
        [ns_window setLevel:NSFloatingWindowLevel];
    if (style & window_style_no_shadow)
        [ns_window setHasShadow:NO];

    view = [[NativeView alloc] initWithFrame:NSMakeRect(0, 0, content.size.width, content.size.height)];
    view->host = this;
    [ns_window setContentView:view];
    [ns_window makeFirstResponder:view];

    delegate = [[NativeWindowDelegate alloc] init];
    delegate->host = this;
    [ns_window setDelegate:delegate];
    [pool release];
}

NSView *cocoa_window::get_content_view() const { return view; }

void cocoa_window::dispatch(event_type type, unsigned long long data) { owner.process_event(type, data); }

void cocoa_window::paint_rect(const ivec4 &client_rect) {
    drawer.begin_paint([view bounds].size.height);
    owner.paint(client_rect);
    drawer.end_paint();
}

void cocoa_window::show(bool visible, bool focus) {
    if (!ns_window)
        return;
    if (visible) {
        if (focus) {
            // An inactive application turns its first click into activation and replays the press
            // after the release (GNUstep): take the activation now.
            if (![NSApp isActive])
                [NSApp activateIgnoringOtherApps:YES];
            [ns_window makeKeyAndOrderFront:nil];
        } else
            [ns_window orderFront:nil];
    } else {
        capturing = false;
        [ns_window orderOut:nil];
    }
}

bool cocoa_window::is_shown() const { return ns_window && [ns_window isVisible]; }

bool cocoa_window::has_focus() const { return ns_window && [ns_window isKeyWindow]; }

void cocoa_window::set_to_front() { [ns_window orderFrontRegardless]; }

void cocoa_window::set_opacity(float opacity) {
    [ns_window setAlphaValue:opacity];
    [ns_window setOpaque:opacity >= 1.0f];
}

float cocoa_window::get_dpi() const { return native_get_screen_dpi(); }

void cocoa_window::set_rect(const ivec4 &frame) {
    if (!ns_window)
        return;
    [ns_window setFrame:to_ns_screen_rect({frame.x, frame.y, std::max(frame.w, 1), std::max(frame.h, 1)})
                display:YES];
}

ivec4 cocoa_window::get_rect() const { return ns_window ? from_ns_screen_rect([ns_window frame]) : ivec4{}; }

ivec4 cocoa_window::get_client_rect() const {
    if (!ns_window)
        return {};
    return from_ns_screen_rect([ns_window contentRectForFrameRect:[ns_window frame]]);
}

void cocoa_window::set_min_size(_vec2<int> size) { [ns_window setContentMinSize:NSMakeSize(size.x, size.y)]; }

void cocoa_window::set_max_size(_vec2<int> size) {
    // AppKit has no "unlimited" value: 0 stands for it here.
    [ns_window setContentMaxSize:NSMakeSize(size.x > 0 ? size.x : FLT_MAX, size.y > 0 ? size.y : FLT_MAX)];
}

void cocoa_window::maximize() {
    if (maximized)
        return;
    restored_frame = get_rect();
    maximized = true;
    set_rect(get_screen_rect());
}

void cocoa_window::restore() {
    if (!maximized)
        return;
    maximized = false;
    set_rect(restored_frame);
}

ivec4 cocoa_window::get_screen_rect() const {
    NSScreen *screen = ns_window ? [ns_window screen] : nil;
    if (screen == nil)
        screen = [NSScreen mainScreen];
    return screen ? from_ns_screen_rect([screen visibleFrame]) : ivec4{};
}

void cocoa_window::invalidate(const ivec4 &r) {
    if (view && r.w > 0 && r.h > 0)
        [view setNeedsDisplayInRect:NSMakeRect(r.x, r.y, r.w, r.h)];
}

void cocoa_window::flush() { [view displayIfNeeded]; }

void cocoa_window::close_requested() { owner.process_close(); }

// --- modal sessions -------------------------------------------------------------------------------------

void cocoa_window::run_modal(bool fill_screen) {
    NIMBIT_ASSERT(!modalSession);
    if (!ns_window)
        return;
    if (fill_screen)
        set_rect(get_screen_rect());
    // The window that had the keyboard gets it back afterwards, as a question's owner does on macOS
    // (GNUstep would hand it to whichever window it finds first).
    NSWindow *previousKey = [[NSApp keyWindow] retain];
    [ns_window makeKeyAndOrderFront:nil];
    modalSession = [NSApp beginModalSessionForWindow:ns_window];
    // runModalSession handles what is queued; the run loop then waits for input. The wait is cut at
    // a short limit so that an end_modal from a timer (which is not input) is seen promptly.
    // The session ends here, never inside runModalSession: ending it from an event that session
    // dispatches (a key or click on the modal window) frees it under GNUstep's feet.
    modalEnding = false;
    while (modalSession) {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        const NSInteger response = modalEnding
                                       ? static_cast<NSInteger>(NSRunStoppedResponse)
                                       : [NSApp runModalSession:static_cast<NSModalSession>(modalSession)];
        if (modalSession && (modalEnding || response != NSRunContinuesResponse || ![ns_window isVisible])) {
            // Ended by end_modal, or closed or hidden otherwise.
            [NSApp endModalSession:static_cast<NSModalSession>(modalSession)];
            modalSession = nullptr;
            modalEnding = false;
        }
        if (modalSession)
            [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                                     beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.05]];
        [pool release];
    }
    if (previousKey != nil && previousKey != ns_window && [previousKey isVisible])
        [previousKey makeKeyWindow];
    [previousKey release];
}

void cocoa_window::end_modal() {
    NIMBIT_ASSERT(is_modal());
    [ns_window orderOut:nil];
    modalEnding = true;
}

// --- timers ---------------------------------------------------------------------------------------

void cocoa_window::start_timer(uint32_t native_id, float seconds, bool repeat) {
    stop_timer(native_id);
    NativeTimerTarget *target = [[NativeTimerTarget alloc] init];
    target->host = this;
    target->nativeId = native_id;
    NSTimer *timer = [NSTimer timerWithTimeInterval:std::max(seconds, 0.001f)
                                             target:target
                                           selector:@selector(fire:)
                                           userInfo:nil
                                            repeats:repeat ? YES : NO];
    [target release]; // the timer holds it
    [[NSRunLoop currentRunLoop] addTimer:timer forMode:NSDefaultRunLoopMode];
    timers[native_id] = running_timer{[timer retain], repeat};
}

void cocoa_window::stop_timer(uint32_t native_id) {
    auto it = timers.find(native_id);
    if (it == timers.end())
        return;
    NSTimer *timer = it->second.timer;
    timers.erase(it);
    [timer invalidate];
    [timer release];
}

void cocoa_window::stop_all_timers() {
    while (!timers.empty())
        stop_timer(timers.begin()->first);
}

void cocoa_window::timer_fired(uint32_t native_id) {
    auto it = timers.find(native_id);
    if (it == timers.end())
        return;
    if (!it->second.repeat) {
        // A single-shot timer is spent once it fires: forget it before its handler runs.
        NSTimer *spent = it->second.timer;
        timers.erase(it);
        [spent invalidate];
        [spent release];
    }
    owner.process_native_timer(native_id);
}

// The classic drag: a file-names pasteboard and dragImage:, which runs the drag session itself and
// returns after the drop. It needs the mouse event being handled, so it only starts from a drag.
// AppKit raises exceptions for bad arguments: none may leave the toolkit.
bool cocoa_window::begin_file_drag(const std::vector<std::string> &paths, const native_bitmap *image,
                                   _vec2<int> client_point) {
    NSEvent *event = [NSApp currentEvent];
    if (view == nil || paths.empty() || event == nil)
        return false;
    const NSEventType kind = [event type];
    if (kind != NSLeftMouseDragged && kind != NSLeftMouseDown)
        return false;
    bool started = false;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    @try {
        NSMutableArray *files = [NSMutableArray arrayWithCapacity:paths.size()];
        for (const std::string &path : paths)
            if (NSString *name = [NSString stringWithUTF8String:path.c_str()])
                [files addObject:name];
        NSPasteboard *board = [NSPasteboard pasteboardWithName:NSDragPboard];
        [board declareTypes:[NSArray arrayWithObject:NSFilenamesPboardType] owner:nil];
        // The picture under the pointer, at most 128 points wide; the file's icon without one.
        NSImage *picture = nil;
        const auto *pixels = dynamic_cast<const cocoa_bitmap *>(image);
        if (pixels != nullptr && pixels->drawable() != nil) {
            const _vec2<int> size = pixels->get_size();
            const double scale = std::min(1.0, 128.0 / std::max(size.x, 1));
            picture = [[[NSImage alloc] initWithSize:NSMakeSize(size.x, size.y)] autorelease];
            [picture addRepresentation:pixels->drawable()];
            [picture setSize:NSMakeSize(std::floor(size.x * scale), std::floor(size.y * scale))];
        } else if ([files count] > 0) {
            picture = [[NSWorkspace sharedWorkspace] iconForFile:[files objectAtIndex:0]];
        }
        if ([files count] > 0 && picture != nil &&
            [board setPropertyList:files forType:NSFilenamesPboardType]) {
            const NSSize shown = [picture size];
            // The view is flipped: the point is the image's bottom-left corner, centred under the pointer.
            const NSPoint at =
                NSMakePoint(client_point.x - shown.width / 2, client_point.y + shown.height / 2);
            started = true;
            [view dragImage:picture
                         at:at
                     offset:NSZeroSize
                      event:event
                 pasteboard:board
                     source:view
                  slideBack:YES];
        }
    } @catch (NSException *e) {
        NSLog(@"begin_file_drag: %@", [e reason]);
    }
    [pool release];
    return started;
}

} // namespace cocoa
} // namespace nimbit::ui
