#include "nimbit/filesystem/file_operations.h"

#include "nimbit/filesystem/file_path.h"

#import <Foundation/Foundation.h>

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

} // namespace nimbit
