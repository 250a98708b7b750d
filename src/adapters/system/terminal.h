#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace tarnex {

// At the start of a program. Keeps files that are opened later from taking the place of a standard
// stream that the process was started without: writing to that one then fails. What std::cout and
// std::cerr take is UTF-8 from now on.
void OccupyStandardStreams();

// From now on messages that nobody reads and files that may not grow fail to be written, and the
// process goes on.
void BrokenStreamsFail();

// Writes UTF-8 at once to a standard stream of C; a console shows it as it is, whatever its own
// code page. False when nobody reads the stream any more.
bool PrintOut(std::string_view utf8);
bool PrintError(std::string_view utf8);

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
