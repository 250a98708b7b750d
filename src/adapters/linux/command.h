#pragma once

#include "platform/clock.h"

#include <optional>
#include <string>
#include <vector>

namespace tarnex {

struct CommandResult {
    bool succeeded = false; // exit status 0
    std::string output;     // of standard output; at most the first 4096 bytes
};

// Runs a program, found by PATH unless its name holds a slash, and waits for its end: at most
// limit, then it is killed. No shell takes part; its input is empty and its errors go nowhere.
// Nothing when it could not be started or was killed.
std::optional<CommandResult> RunCommand(const std::vector<std::string>& arguments, Duration limit);

} // namespace tarnex
