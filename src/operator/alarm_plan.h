#pragma once

#include "platform/clock.h"
#include "simulator/event_words.h"

#include <cstdint>
#include <vector>

namespace tarnex {

// One thing that a monitoring program reports.
struct PlannedAlarm {
    Duration at; // since the beginning
    MonitorEvent event;
};

// Plausible alarms of one machine over some days, in the order of time: each kind of trouble comes
// as often as its kind does, at any hour, and most troubles end with a report that all is well.
// The same seed gives the same alarms.
std::vector<PlannedAlarm> PlanAlarms(int days, std::uint64_t seed);

} // namespace tarnex
