#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace tarnex {

// Keeps files that are opened later from taking the place of a standard stream that the process was
// started without: writing to that one then fails.
void OccupyStandardStreams();

// From now on messages that nobody reads and files that may not grow fail to be written, and the
// process goes on.
void BrokenStreamsFail();

// Whether a person reads that stream of the process, and colours may be used on it.
bool StandardOutputIsTerminal();
bool StandardErrorIsTerminal();
bool TerminalShowsColours();
// The width of standard output in characters; 80 where nobody knows.
std::size_t TerminalColumns();
// Whether a person can answer questions.
bool StandardInputIsTerminal();

// Waits so long; false at once when nobody reads standard output any more, where the system tells.
bool WaitForReader(std::chrono::milliseconds length);

// Shows prompt on standard error and reads a line of standard input, without an echo when it is
// secret; nothing at the end of the input.
std::optional<std::string> AskOnTerminal(const std::string& prompt, bool secret);

} // namespace tarnex
