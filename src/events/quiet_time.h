#pragma once

#include "platform/clock.h"
#include "settings/settings.h"

namespace tarnex {

// Whether a text is a time of day as it counts here: "07:05", "7:05" or "7:05:10".
bool IsTimeOfDay(TextView text);

// A time of day as "hh:mm": "7:05" and "7:05:10" give "07:05"; a text that is no time stays as it
// is.
Text FormattedHourMinute(TextView text);

// Whether no SMS may go out at that time. Both bounds are quiet. The times compare as texts, so a
// window over midnight never holds.
bool InQuietTime(const Settings& settings, const CalendarTime& now);

} // namespace tarnex
