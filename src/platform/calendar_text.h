#pragma once

#include "platform/clock.h"
#include "platform/text.h"

namespace tarnex {

// Calendar times as the logs, the SMS texts and the mails show them, 24-hour.
Text DateText(const CalendarTime& time);       // "yyyy-mm-dd"
Text TimeText(const CalendarTime& time);       // "hh:mm:ss"
Text HourMinuteText(const CalendarTime& time); // "hh:mm"

// A length of time for people: "35 s", "12 min", "3 h 5 min", "2 d 4 h".
std::string AgeText(long long seconds);

// Whether a text is a time of day as it counts here: "07:05", "7:05" or "7:05:10".
bool IsTimeOfDay(TextView text);

// A time of day as "hh:mm": "7:05" and "7:05:10" give "07:05"; a text that is no time stays as it
// is.
Text FormattedHourMinute(TextView text);

} // namespace tarnex
