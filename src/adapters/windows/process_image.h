#pragma once

#include "adapters/windows/windows_handle.h"

#include <string>

namespace tarnex {

// The file that a process runs; "" where the system does not say.
std::wstring ImageOf(HANDLE process);

} // namespace tarnex
