#pragma once

#include <string>

namespace tarnex {

// The number of this process.
long ThisProcess();
// The file of this program; "" where the system does not say.
std::string ThisProgram();

// Whether a process of that number lives and runs the program of that name. Where the system hides
// the name from this user, any live process of the number counts.
bool ProcessRuns(long process, const std::string& program);

} // namespace tarnex
