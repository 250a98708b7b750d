#pragma once

#include "operator/status_reading.h"

namespace tarnex {

// The state in a few lines of at most 80 columns, for one look.
void PrintSummary(const OperatorWorld& world, const StatusReading& state);

// The state in one line as monitoring plugins have it, with performance data, and their exit
// status: 0 OK, 1 WARNING, 2 CRITICAL, 3 UNKNOWN.
struct PluginResult {
    int status = 3;
    std::string line;
};
PluginResult CheckLine(const StatusReading& state);
// Nothing is known, for that reason.
PluginResult UnknownLine(const std::string& why);

} // namespace tarnex
