#pragma once

#include "platform/clock.h"

#include <string_view>

namespace tarnex {

// Tells the service manager that started this process a change of state ("READY=1"). Nothing
// happens when no service manager wants to know.
void NotifySystemd(std::string_view state);

// How long the service manager waits for "WATCHDOG=1" before it takes this process for hung and
// starts it again; 0 when it does not watch over this process.
Duration WatchdogPatience();

} // namespace tarnex
