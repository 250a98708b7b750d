#pragma once

#include "platform/clock.h"

namespace tarnex {

// The machine's calendar time now, in its own time zone.
CalendarTime LocalTime();
// The same of another moment.
CalendarTime LocalTimeAt(std::chrono::system_clock::time_point time);

} // namespace tarnex
