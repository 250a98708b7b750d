#pragma once

#include "operator/control_world.h"
#include "operator/json_output.h"

namespace tarnex {

// What the status file of the service says, and whether that is still true.
struct ServiceState {
    bool running = false;
    std::string absence; // why it does not count as running, for people
    Json status;         // an object; null when there is no file
    long long now = 0;   // s since 1970, as the times in it

    long long SecondsSince(const Json& time) const { return now - time.get<long long>(); }
};

// Throws Failure for a file that cannot be read or is none of the service.
ServiceState ReadServiceState(const ControlWorld& world);

} // namespace tarnex
