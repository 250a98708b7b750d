#pragma once

#include "operator/operator_world.h"
#include "platform/calendar.h"

#include <optional>
#include <string>

namespace tarnex {

// "2024-05-06" (midnight) or "2024-05-06 22:30"; nothing for what is no such moment.
std::optional<CalendarTime> ParseMoment(const std::string& text);

// "Mon 2024-05-06 22:30"
std::string MomentText(const CalendarTime& time);

// Local time now.
CalendarTime LocalNow(const OperatorWorld& world);

// Of a local time that comes twice, as at the end of summer time, the second one.
std::chrono::system_clock::time_point TimeOf(const OperatorWorld& world, const CalendarTime& local);

// Milliseconds since 1970.
std::int64_t UnixMs(std::chrono::system_clock::time_point time);

// Local time with its offset from UTC at that moment: "2024-05-06T08:00:00+08:00".
std::string IsoTime(const OperatorWorld& world, std::chrono::system_clock::time_point time);

// "Sunday" to "Saturday"
const char* WeekdayName(int weekday);

} // namespace tarnex
