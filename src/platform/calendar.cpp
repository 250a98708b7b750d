#include "platform/calendar.h"

namespace tarnex {

std::chrono::sys_seconds AsIfUtc(const CalendarTime& local) {
    using namespace std::chrono;
    return sys_days(year(local.year) / local.month / local.day) + hours(local.hour) +
           minutes(local.minute) + seconds(local.second);
}

CalendarTime CalendarOf(std::chrono::sys_seconds as_if_utc) {
    using namespace std::chrono;
    const sys_days day = floor<days>(as_if_utc);
    const year_month_day date(day);
    const hh_mm_ss time(as_if_utc - day);
    return {.year = int(date.year()),
            .month = int(unsigned(date.month())),
            .day = int(unsigned(date.day())),
            .hour = int(time.hours().count()),
            .minute = int(time.minutes().count()),
            .second = int(time.seconds().count()),
            .weekday = int(weekday(day).c_encoding())};
}

} // namespace tarnex
