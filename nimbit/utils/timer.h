#pragma once

#include <ctime>
#include <string>

namespace nimbit {

// Clock readings and the two time stamps used in capture names.
struct timer {
    // The system clock in microseconds since the Unix epoch.
    static double get_current_microseconds();
    // The system clock in whole seconds since the epoch.
    static time_t get_current_time();
    // The local time as "2024-05-01_13.45.10" (for_file_name) or "2024.05.01 13:45:10".
    static std::string get_formated_time(bool for_file_name);
};

} // namespace nimbit
