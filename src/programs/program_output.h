#pragma once

#include "platform/clock.h"
#include "platform/exit_status.h"
#include "platform/text.h"

#include <cerrno>
#include <cstdio>
#include <string>

namespace tarnex {

// One line on standard output, at once, with the seconds since the start. Control characters are
// escaped: most of it is what others sent. False when nobody reads standard output any more.
inline bool PrintWithTime(const Clock& clock, const std::string& line) {
    const double seconds = std::chrono::duration<double>(clock.Now()).count();
    std::printf("[%9.3f] %s\n", seconds, EscapeControls(line).c_str());
    return std::fflush(stdout) == 0 || errno != EPIPE;
}

} // namespace tarnex
