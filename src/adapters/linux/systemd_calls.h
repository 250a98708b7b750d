#pragma once

#include "platform/clock.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnex {

// What the controller asks of systemd and tells it.

struct CommandResult {
    bool succeeded = false; // exit status 0
    std::string output;     // of standard output; at most the first 4096 bytes
};

// Runs a program, found by PATH unless its name holds a slash, and waits for its end: at most
// limit, then it is killed. No shell takes part; its input is empty and its errors go nowhere.
// Nothing when it could not be started or was killed.
std::optional<CommandResult> RunCommand(const std::vector<std::string>& arguments, Duration limit);

// Tells the service manager that started this process a change of state ("READY=1"). Nothing
// happens when no service manager wants to know.
void NotifySystemd(std::string_view state);

// How long the service manager waits for "WATCHDOG=1" before it takes this process for hung and
// starts it again; 0 when it does not watch over this process.
Duration WatchdogPatience();

} // namespace tarnex
