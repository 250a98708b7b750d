#pragma once

#include "platform/clock.h"
#include "platform/text.h"

namespace tarnex {

// Calendar times as the logs, the SMS texts and the mails show them, 24-hour.
Text DateText(const CalendarTime& time);       // "yyyy-mm-dd"
Text TimeText(const CalendarTime& time);       // "hh:mm:ss"
Text HourMinuteText(const CalendarTime& time); // "hh:mm"

} // namespace tarnex
