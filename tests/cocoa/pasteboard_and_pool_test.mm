// What AppKit itself sees of the backend: the frame capture's image on the general pasteboard, read
// back through AppKit rather than through the backend, and the autorelease pools around the thread
// pool's jobs.

#import <AppKit/AppKit.h>

#include "nimbit/ui/bitmap.h"
#include "nimbit/utils/thread_pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

namespace {

std::atomic<int> probes_freed{0};

} // namespace

// An object that counts its own end.
@interface PoolProbe : NSObject
@end

@implementation PoolProbe
- (void)dealloc {
    ++probes_freed;
    [super dealloc];
}
@end

namespace {

// A capture as the controller makes it: 60 x 20, partly transparent (the frame's alpha is kept),
// every pixel's red and green telling its place.
nimbit::ui::bitmap capture_like() {
    nimbit::ui::bitmap image;
    EXPECT_TRUE(image.create({60, 20}, nimbit::ui::image_alpha::alpha));
    nimbit::ui::bitmap_data data = image.lock();
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 60; ++x) {
            unsigned char *p = data.bits + static_cast<size_t>(y) * data.pitch + static_cast<size_t>(x) * 4;
            p[0] = static_cast<unsigned char>(x * 4), p[1] = static_cast<unsigned char>(y * 12), p[2] = 200,
            p[3] = 191;
        }
    image.unlock(data);
    return image;
}

TEST(CocoaPasteboard, TheCapturesImageReachesAppKitWithItsPixels) {
    const nimbit::ui::bitmap image = capture_like();
    ASSERT_TRUE(image.copy_to_clipboard());

    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSPasteboard *board = [NSPasteboard generalPasteboard];
    NSData *data = [board dataForType:NSTIFFPboardType];
    ASSERT_NE(data, nil);
    NSBitmapImageRep *rep = [NSBitmapImageRep imageRepWithData:data];
    ASSERT_NE(rep, nil);
    EXPECT_EQ(std::pair([rep pixelsWide], [rep pixelsHigh]), std::pair(NSInteger(60), NSInteger(20)));
    // A few pixels, straight colour: corners, the middle, the far edges.
    for (const auto &[x, y] :
         std::vector<std::pair<int, int>>{{0, 0}, {59, 0}, {0, 19}, {30, 10}, {59, 19}}) {
        SCOPED_TRACE(testing::Message() << x << ", " << y);
        NSColor *c = [[rep colorAtX:x y:y] colorUsingColorSpaceName:NSDeviceRGBColorSpace];
        ASSERT_NE(c, nil);
        EXPECT_NEAR([c alphaComponent] * 255, 191, 1);
        EXPECT_NEAR([c redComponent] * 255, x * 4, 2);
        EXPECT_NEAR([c greenComponent] * 255, y * 12, 2);
        EXPECT_NEAR([c blueComponent] * 255, 200, 2);
    }
    [pool drain];
}

// Jobs that make autoreleased objects and open no pool of their own: each object is freed when its
// job ends, not leaked (GNUstep would also warn of an autorelease without a pool).
TEST(CocoaThreadPool, AutoreleasedObjectsOfAJobAreFreedWhenItEnds) {
    nimbit::thread_pool pool(3);
    probes_freed = 0;
    std::atomic<int> made{0};
    pool.enqueue(30, [&](const nimbit::thread_worker_data &d) {
        for (uint32_t i = d.begin; i < d.end; ++i, ++made) {
            [[[PoolProbe alloc] init] autorelease];
            [NSString stringWithFormat:@"job item %u", i];
        }
    });
    EXPECT_EQ(made.load(), 30);
    EXPECT_EQ(probes_freed.load(), 30);
}

} // namespace
