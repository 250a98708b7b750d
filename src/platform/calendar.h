#pragma once

#include "platform/clock.h"

namespace tarnex {

// Calendar time as if it were UTC, to count with, and back, with the weekday.
std::chrono::sys_seconds AsIfUtc(const CalendarTime& local);
CalendarTime CalendarOf(std::chrono::sys_seconds as_if_utc);

} // namespace tarnex
