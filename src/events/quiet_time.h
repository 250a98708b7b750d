#pragma once

#include "platform/clock.h"
#include "settings/settings.h"

namespace tarnex {

// Whether no SMS may go out at that time. Both bounds are quiet. The times compare as texts, so a
// window over midnight never holds.
bool InQuietTime(const Settings& settings, const CalendarTime& now);

} // namespace tarnex
