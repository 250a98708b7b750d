#pragma once

#include <string>

namespace tarnex {

// Starts the installed service, anew if it runs, and waits until that is done. "", or what stands
// in the way.
std::string RestartService();

} // namespace tarnex
