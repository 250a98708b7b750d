#pragma once

#include "operator/json_output.h"
#include "operator/operator_world.h"
#include "service/service_status.h"

namespace tarnex {

// The status file as tarnexctl reads it: what it says, and whether that is still true.
struct StatusReading {
    bool running = false;
    std::string absence; // why it does not count as running, for people
    Json status;         // an object; null when there is no file
    long long now = 0;   // s since 1970, as the times in it

    long long SecondsSince(const Json& time) const { return now - time.get<long long>(); }
};

// Whether that part of a status, "unit", tells of a unit in that phase.
inline bool UnitIs(UnitPhase phase, const Json& unit) {
    return unit.at("state") == PhaseWord(phase);
}

// Throws Failure for a file that cannot be read or is none of the service.
StatusReading ReadStatusFile(const OperatorWorld& world);

} // namespace tarnex
