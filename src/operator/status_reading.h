#pragma once

#include "operator/json_output.h"
#include "operator/operator_world.h"

namespace tarnex {

// The status file as tarnexctl reads it: what it says, and whether that is still true.
struct StatusReading {
    bool running = false;
    std::string absence; // why it does not count as running, for people
    Json status;         // an object; null when there is no file
    long long now = 0;   // s since 1970, as the times in it

    long long SecondsSince(const Json& time) const { return now - time.get<long long>(); }
};

// Throws Failure for a file that cannot be read or is none of the service.
StatusReading ReadStatusFile(const OperatorWorld& world);

} // namespace tarnex
