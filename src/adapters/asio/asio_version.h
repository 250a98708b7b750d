#pragma once

#include <string>

namespace tarnex {

// "1.22.1"; the program was built with it.
std::string AsioVersion();

} // namespace tarnex
