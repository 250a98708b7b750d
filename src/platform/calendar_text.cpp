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

Text DateText(const CalendarTime& time) {
    return ToText(time.year, 4) + u"-" + ToText(time.month, 2) + u"-" + ToText(time.day, 2);
}

Text TimeText(const CalendarTime& time) {
    return HourMinuteText(time) + u":" + ToText(time.second, 2);
}

Text HourMinuteText(const CalendarTime& time) {
    return ToText(time.hour, 2) + u":" + ToText(time.minute, 2);
}

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

std::string AgeText(long long seconds) {
    seconds = std::max(seconds, 0LL);
    const auto pair = [](long long big, const char* big_unit, long long small,
                         const char* small_unit) {
        const std::string text = std::to_string(big) + " " + big_unit;
        return small == 0 ? text : text + " " + std::to_string(small) + " " + small_unit;
    };
    if (seconds < 60)
        return std::to_string(seconds) + " s";
    if (seconds < 3600)
        return std::to_string(seconds / 60) + " min";
    if (seconds < 86400)
        return pair(seconds / 3600, "h", seconds / 60 % 60, "min");
    return pair(seconds / 86400, "d", seconds / 3600 % 24, "h");
}

} // namespace tarnex
