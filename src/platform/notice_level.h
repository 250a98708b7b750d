#pragma once

namespace tarnex {

// How much a line for the operator matters, by the numbers that systems have for it (syslog).
enum class NoticeLevel {
    kError = 3,   // alarms do not get out, or somebody must act at once
    kWarning = 4, // somebody must act
    kNotice = 5,  // what was wrong is over
};

} // namespace tarnex
