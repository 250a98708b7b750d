#pragma once

#include "operator/operator_world.h"
#include "platform/clock.h"

#include <optional>
#include <string>

namespace tarnex {

// "2024-05-06" (midnight) or "2024-05-06 22:30"; nothing for what is no such moment.
std::optional<CalendarTime> ParseMoment(const std::string& text);

// "Mon 2024-05-06 22:30"
std::string MomentText(const CalendarTime& time);

// How far local time is ahead of UTC now.
std::chrono::minutes OffsetFromUtc(const OperatorWorld& world);

// Seconds since 1970 as local time: "2024-05-06T08:00:00+08:00".
std::string IsoTime(long long seconds, std::chrono::minutes offset);

// "Sunday" to "Saturday"
const char* WeekdayName(int weekday);

} // namespace tarnex
