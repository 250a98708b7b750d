#pragma once

#include "platform/log_files.h"

#include <memory>
#include <string>

namespace tarnex {

// The log table in an Access database, which takes a driver that not every machine has.

// Whether the file begins as such a database does.
bool IsAccessDatabase(const std::string& path);

// "" where this machine can use one, else why not and what to do, to follow the name of the file.
std::string AccessTrouble();

// To be used where there is no AccessTrouble(). The driver works in a thread of its own: no call
// waits longer than 50 ms for it. A row that takes longer is taken ("") and stored when the driver
// gets to it; should that fail, a later call says so. The same goes for a file that takes long to
// open. Rows that still wait when the table goes are stored then.
std::unique_ptr<LogTable> MakeAccessLogTable();

// "" when the file takes rows, else what is wrong, in words for an operator. May take seconds.
std::string AccessWritingProblem(const std::string& path);

// As LogFiles::Open().
Result<std::unique_ptr<LogReader>> OpenAccessLog(const std::string& path);

} // namespace tarnex
