#include "nimbit/utils/timer.h"

#include <chrono>

namespace nimbit {

double timer::get_current_microseconds() {
    using namespace std::chrono;
    return static_cast<double>(duration_cast<microseconds>(system_clock::now().time_since_epoch()).count());
}

time_t timer::get_current_time() {
    return std::time(nullptr);
}

std::string timer::get_formated_time(bool for_file_name) {
    const time_t now = get_current_time();
    tm local{};
#if defined(_WIN32)
    if (::localtime_s(&local, &now) != 0) // the same call with its arguments the other way round
        return {};
#else
    if (!::localtime_r(&now, &local))
        return {};
#endif
    char text[22];
    const size_t n =
        std::strftime(text, sizeof text, for_file_name ? "%Y-%m-%d_%H.%M.%S" : "%Y.%m.%d %H:%M:%S", &local);
    return std::string(text, n);
}

} // namespace nimbit
