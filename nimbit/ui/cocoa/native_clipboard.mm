#include "nimbit/ui/native_clipboard.h"

#import <AppKit/AppKit.h>

#include "nimbit/ui/cocoa/cocoa_util.h"
#include "nimbit/ui/cocoa/native_bitmap.h"

#include <algorithm>

// The general pasteboard. Images go out as TIFF (the type every AppKit reader takes) and come back
// from TIFF or PNG. Under GNUstep the pasteboard is served by the gpbs daemon, which the library
// starts on first use and which also bridges to the X selection.

namespace nimbit::ui {

namespace {

#ifdef GNUSTEP
NSString *const text_type = NSStringPboardType;
NSString *const tiff_type = NSTIFFPboardType;
NSString *const png_type = @"public.png";
#else
NSString *const text_type = NSPasteboardTypeString;
NSString *const tiff_type = NSPasteboardTypeTIFF;
NSString *const png_type = NSPasteboardTypePNG;
#endif

class cocoa_clipboard final : public native_clipboard {
  public:
    bool set_text(std::string_view utf8) override {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        bool ok = false;
        @try {
            NSPasteboard *board = [NSPasteboard generalPasteboard];
            [board declareTypes:[NSArray arrayWithObject:text_type] owner:nil];
            ok = [board setString:cocoa::to_ns_string(utf8) forType:text_type];
        } @catch (NSException *) {
            ok = false; // no pasteboard server
        }
        [pool release];
        return ok;
    }

    std::string get_text() const override {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        std::string text;
        @try {
            text = cocoa::to_utf8([[NSPasteboard generalPasteboard] stringForType:text_type]);
        } @catch (NSException *) {
        }
        [pool release];
        return text;
    }

    bool has_text() const override { return has_type(text_type); }

    bool set_image(const native_bitmap &image) override {
        // Any backend's bitmap: its pixels are read through the common interface.
        cocoa::cocoa_bitmap copy;
        unsigned pitch = 0;
        const unsigned char *pixels = image.read_pixels(pitch);
        const _vec2<int> size = image.get_size();
        if (!pixels || !copy.create(size, image.has_alpha()) || pitch < unsigned(size.x) * 4u)
            return false;
        unsigned out_pitch = 0;
        unsigned char *out = copy.lock_pixels(out_pitch);
        for (int y = 0; y < size.y; ++y)
            std::copy_n(pixels + size_t(y) * pitch, size_t(size.x) * 4, out + size_t(y) * out_pitch);
        copy.unlock_pixels();
        const std::vector<unsigned char> tiff = copy.encode_tiff();
        if (tiff.empty())
            return false;
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        bool ok = false;
        @try {
            NSPasteboard *board = [NSPasteboard generalPasteboard];
            [board declareTypes:[NSArray arrayWithObject:tiff_type] owner:nil];
            ok = [board setData:[NSData dataWithBytes:tiff.data() length:tiff.size()] forType:tiff_type];
        } @catch (NSException *) {
            ok = false;
        }
        [pool release];
        return ok;
    }

    std::unique_ptr<native_bitmap> get_image() const override {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        std::unique_ptr<native_bitmap> result;
        @try {
            NSPasteboard *board = [NSPasteboard generalPasteboard];
            NSString *type =
                [board availableTypeFromArray:[NSArray arrayWithObjects:png_type, tiff_type, nil]];
            NSData *data = type ? [board dataForType:type] : nil;
            if (data != nil && [data length] > 0) {
                auto image = std::make_unique<cocoa::cocoa_bitmap>();
                if (image->decode_any(static_cast<const unsigned char *>([data bytes]), [data length]))
                    result = std::move(image);
            }
        } @catch (NSException *) {
        }
        [pool release];
        return result;
    }

    bool has_image() const override { return has_type(tiff_type) || has_type(png_type); }

  private:
    static bool has_type(NSString *type) {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        bool found = false;
        @try {
            found = [[NSPasteboard generalPasteboard]
                        availableTypeFromArray:[NSArray arrayWithObject:type]] != nil;
        } @catch (NSException *) {
        }
        [pool release];
        return found;
    }
};

} // namespace

native_clipboard &get_native_clipboard() {
    static cocoa_clipboard instance;
    return instance;
}

} // namespace nimbit::ui
