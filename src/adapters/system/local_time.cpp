#include "adapters/system/local_time.h"

#include <ctime>

namespace tarnex {

CalendarTime LocalTime() {
    return LocalTimeAt(std::chrono::system_clock::now());
}

CalendarTime LocalTimeAt(std::chrono::system_clock::time_point time) {
    const std::time_t then = std::chrono::system_clock::to_time_t(time);
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &then);
#else
    localtime_r(&then, &local);
#endif
    return {.year = local.tm_year + 1900,
            .month = local.tm_mon + 1,
            .day = local.tm_mday,
            .hour = local.tm_hour,
            .minute = local.tm_min,
            .second = local.tm_sec,
            .weekday = local.tm_wday};
}

} // namespace tarnex
