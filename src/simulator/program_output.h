#pragma once

#include "platform/clock.h"
#include "platform/exit_status.h"

#include <cstdio>
#include <string>

namespace tarnex {

// One line on standard output, at once, with the seconds since the start.
inline void PrintWithTime(const Clock& clock, const std::string& line) {
    const double seconds = std::chrono::duration<double>(clock.Now()).count();
    std::printf("[%9.3f] %s\n", seconds, line.c_str());
    std::fflush(stdout);
}

} // namespace tarnex
