#include "events/quiet_time.h"

#include "platform/calendar_text.h"

#include <algorithm>
#include <vector>

namespace tarnex {

namespace {

constexpr int kHighest[] = {23, 59, 59}; // hour, minute, second

std::vector<TextView> SplitAtColons(TextView text) {
    std::vector<TextView> parts;
    for (std::size_t colon; (colon = text.find(u':')) != TextView::npos;) {
        parts.push_back(text.substr(0, colon));
        text.remove_prefix(colon + 1);
    }
    parts.push_back(text);
    return parts;
}

bool IsNumberUpTo(TextView text, int highest) {
    return (text.size() == 1 || text.size() == 2) &&
           text.find_first_not_of(u"0123456789") == TextView::npos &&
           LeadingNumber(text) <= highest;
}

} // namespace

bool IsTimeOfDay(TextView text) {
    const std::vector<TextView> parts = SplitAtColons(text);
    return (parts.size() == 2 || parts.size() == 3) &&
           std::equal(parts.begin(), parts.end(), kHighest, IsNumberUpTo);
}

Text FormattedHourMinute(TextView text) {
    if (!IsTimeOfDay(text))
        return Text(text);
    const std::vector<TextView> parts = SplitAtColons(text);
    return HourMinuteText(
        {.hour = int(LeadingNumber(parts[0])), .minute = int(LeadingNumber(parts[1]))});
}

bool InQuietTime(const Settings& settings, const CalendarTime& now) {
    const auto day = std::size_t(now.weekday);
    if (!settings.QuietTimeOn || !settings.QuietDay[day])
        return false;
    const Text time = HourMinuteText(now);
    return FormattedHourMinute(settings.QuietTimes[2 * day]) <= time &&
           time <= FormattedHourMinute(settings.QuietTimes[2 * day + 1]);
}

} // namespace tarnex
