#include "nimbit/filesystem/file_operations.h"

#include "nimbit/filesystem/file_descriptor.h"
#include "nimbit/filesystem/file_path.h"

#import <Foundation/Foundation.h>

#include <sys/attr.h>
#include <sys/stat.h>

namespace nimbit {

bool set_file_dates(const file_path &path, int64_t created, int64_t modified) {
    if (path.empty())
        return false;
    @autoreleasepool {
        @try {
            NSString *target = [NSString stringWithUTF8String:path.c_str()];
            if (target == nil)
                return false;
            NSDictionary *attributes = @{
                NSFileCreationDate :
                    [NSDate dateWithTimeIntervalSince1970:static_cast<NSTimeInterval>(created)],
                NSFileModificationDate :
                    [NSDate dateWithTimeIntervalSince1970:static_cast<NSTimeInterval>(modified)]
            };
            NSError *error = nil;
            return [[NSFileManager defaultManager] setAttributes:attributes
                                                    ofItemAtPath:target
                                                           error:&error] == YES;
        } @catch (NSException *) {
            // Nothing may escape into the host.
            return false;
        }
    }
}

bool set_file_dates(const file_descriptor &file, int64_t created, int64_t modified) {
    if (!file)
        return false;
    const int fd = file.get();
    // The creation date goes through the descriptor's attribute list, the modification date
    // through futimens, which leaves the access time alone.
    attrlist attributes{};
    attributes.bitmapcount = ATTR_BIT_MAP_COUNT;
    attributes.commonattr = ATTR_CMN_CRTIME;
    timespec creation{static_cast<time_t>(created), 0};
    const bool created_set = ::fsetattrlist(fd, &attributes, &creation, sizeof creation, 0) == 0;
    const timespec times[2] = {{0, UTIME_OMIT}, {static_cast<time_t>(modified), 0}};
    return ::futimens(fd, times) == 0 && created_set;
}

} // namespace nimbit
