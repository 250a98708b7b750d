#pragma once

#include <string_view>

namespace tarnex {

// Tells the service manager that started this process a change of state ("READY=1"). Nothing
// happens when no service manager wants to know.
void NotifySystemd(std::string_view state);

} // namespace tarnex
