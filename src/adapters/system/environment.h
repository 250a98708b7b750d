#pragma once

#include <string>

namespace tarnex {

// An environment variable, in UTF-8; "" where it is not set.
std::string Environment(const char* name);

} // namespace tarnex
