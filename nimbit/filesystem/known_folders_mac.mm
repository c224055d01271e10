#include "nimbit/filesystem/known_folders.h"

#include <cstdlib>
#include <string>

#import <Foundation/Foundation.h>

namespace nimbit {

namespace {

file_path to_path(NSString *text) {
    if (text == nil)
        return {};
    const char *utf8 = [text UTF8String];
    return utf8 ? file_path(utf8) : file_path();
}

NSString *to_string(std::string_view text) {
    NSString *result = [[NSString alloc] initWithBytes:text.data()
                                                length:text.size()
                                              encoding:NSUTF8StringEncoding];
#if !__has_feature(objc_arc)
    [result autorelease];
#endif
    return result;
}

// The first (or last) folder the platform lists for a directory kind and domain, or nil.
NSString *search_path(NSSearchPathDirectory directory, NSSearchPathDomainMask domain, bool last) {
    NSArray<NSString *> *paths = NSSearchPathForDirectoriesInDomains(directory, domain, YES);
    if (paths == nil || [paths count] == 0)
        return nil;
    return last ? [paths lastObject] : [paths firstObject];
}

file_path env_path(std::string_view variable) {
    if (variable.empty())
        return {};
    const char *value = std::getenv(std::string(variable).c_str());
    return value ? file_path(value) : file_path();
}

} // namespace

file_path get_user_data_path() {
    @autoreleasepool {
        return to_path(search_path(NSApplicationSupportDirectory, NSUserDomainMask, false));
    }
}

file_path get_common_data_path() {
    @autoreleasepool {
        return to_path(search_path(NSApplicationSupportDirectory, NSLocalDomainMask, false));
    }
}

file_path get_docs_data_path() {
    @autoreleasepool {
        return to_path(search_path(NSDocumentDirectory, NSUserDomainMask, false));
    }
}

file_path get_docs_data_path(std::string_view product, std::string_view variable, int mode) {
    @autoreleasepool {
        @try {
            if (mode == 0) {
                NSString *common = search_path(NSApplicationSupportDirectory, NSLocalDomainMask, false);
                NSString *name = to_string(product);
                if (common != nil && name != nil) {
                    NSString *settings = [NSString stringWithFormat:@"%@/%@/%@", common, @"Tarvelo", name];
                    NSDictionary *list = [NSDictionary dictionaryWithContentsOfFile:settings];
                    id assets = [list objectForKey:@"AssetsPath"];
                    if ([assets isKindOfClass:[NSString class]] && [(NSString *)assets length] > 1)
                        return to_path((NSString *)assets);
                }
                if (!variable.empty() && std::getenv(std::string(variable).c_str()) != nullptr)
                    return env_path(variable);
                mode = 1;
            }
            if (mode == 2) {
                NSString *users = search_path(NSUserDirectory, NSLocalDomainMask, true);
                NSString *docs = search_path(NSDocumentDirectory, NSUserDomainMask, false);
                if (users == nil || docs == nil)
                    return {};
                return to_path([[users stringByAppendingPathComponent:@"Shared"]
                    stringByAppendingPathComponent:[docs lastPathComponent]]);
            }
            return to_path(search_path(NSDocumentDirectory, NSUserDomainMask, false));
        } @catch (NSException *) {
            // Nothing may escape into the host.
            return {};
        }
    }
}

file_path get_common_data_path(std::string_view variable, int mode) {
    if (mode == 0 && !variable.empty() && std::getenv(std::string(variable).c_str()) != nullptr)
        return env_path(variable);
    if (mode == 1)
        return get_user_data_path();
    return get_common_data_path();
}

} // namespace nimbit
