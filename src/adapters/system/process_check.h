#pragma once

#include <string>

namespace tarnex {

// Whether a process of that number lives and runs the program of that name. Where the system hides
// the name from this user, any live process of the number counts.
bool ProcessRuns(long process, const std::string& program);

} // namespace tarnex
