#pragma once

#include "platform/text.h"

namespace tarnex {

// A list line for standard error: "List2: Send:~TX:RDNO1\r\n" and a line end, in UTF-8. Control
// characters are shown as escapes, so that one list line stays one line of the journal.
std::string EchoLine(const std::string& list, TextView line);

} // namespace tarnex
