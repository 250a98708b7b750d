#pragma once

#include "platform/clock.h"

namespace tarnex {

// The machine's calendar time now, in its own time zone.
CalendarTime LocalTime();

} // namespace tarnex
