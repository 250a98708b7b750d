#pragma once

#include "platform/clock.h"

#include <optional>
#include <string>

namespace tarnex {

// "2024-05-06" (midnight) or "2024-05-06 22:30"; nothing for what is no such moment.
std::optional<CalendarTime> ParseMoment(const std::string& text);

// "Mon 2024-05-06 22:30"
std::string MomentText(const CalendarTime& time);

// "Sunday" to "Saturday"
const char* WeekdayName(int weekday);

} // namespace tarnex
