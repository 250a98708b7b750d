#include "events/quiet_time.h"

#include "platform/calendar_text.h"

namespace tarnex {

bool InQuietTime(const Settings& settings, const CalendarTime& now) {
    const auto day = std::size_t(now.weekday);
    if (!settings.QuietTimeOn || !settings.QuietDay[day])
        return false;
    const Text time = HourMinuteText(now);
    return FormattedHourMinute(settings.QuietTimes[2 * day]) <= time &&
           time <= FormattedHourMinute(settings.QuietTimes[2 * day + 1]);
}

} // namespace tarnex
