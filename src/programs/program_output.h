#pragma once

#include "adapters/system/terminal.h"
#include "platform/clock.h"
#include "platform/exit_status.h"
#include "platform/text.h"

#include <cstdio>
#include <string>

namespace tarnex {

// One line on standard output, at once, with the seconds since the start. Control characters are
// escaped: most of it is what others sent. False when nobody reads standard output any more.
inline bool PrintWithTime(const Clock& clock, const std::string& line) {
    const double seconds = std::chrono::duration<double>(clock.Now()).count();
    char stamp[32];
    std::snprintf(stamp, sizeof stamp, "[%9.3f] ", seconds);
    return PrintOut(stamp + EscapeControls(line) + "\n");
}

} // namespace tarnex
