#pragma once

namespace tarnex {

// Exit statuses of the tools' line versions, as sysexits.h has them.
inline constexpr int kExitOk = 0;
inline constexpr int kExitUsage = 64;
inline constexpr int kExitBadFile = 65;      // the HEX file cannot be sent
inline constexpr int kExitNoFile = 66;       // it cannot be read
inline constexpr int kExitUnavailable = 69;  // no such port, no unit, no display
inline constexpr int kExitLineFailed = 74;   // the serial line failed
inline constexpr int kExitTryLater = 75;     // something else has the port or the unit
inline constexpr int kExitWrongAnswer = 76;  // the unit answered wrong, or stopped to answer
inline constexpr int kExitForbidden = 77;    // this user may not open the port
inline constexpr int kExitInterrupted = 130; // by Ctrl-C

} // namespace tarnex
