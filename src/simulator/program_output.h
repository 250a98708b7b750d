#pragma once

#include "platform/clock.h"

#include <cstdio>
#include <string>

namespace tarnex {

// Exit statuses of the simulator's programs.
inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 64;
inline constexpr int kExitNoService = 69;

// One line on standard output, at once, with the seconds since the start.
inline void PrintWithTime(const Clock& clock, const std::string& line) {
    const double seconds = std::chrono::duration<double>(clock.Now()).count();
    std::printf("[%9.3f] %s\n", seconds, line.c_str());
    std::fflush(stdout);
}

} // namespace tarnex
