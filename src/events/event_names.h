#pragma once

#include "platform/text.h"

#include <optional>

namespace tarnex {

// The vocabulary of notifications, commands and log rows. Each table answers every index of its
// range, with an empty text where it has no name, and nothing outside.
std::optional<TextView> ServiceName(int index); // 0 to 90
std::optional<TextView> StateName(int index);   // 0 to 9
std::optional<TextView> ActionName(int index);  // 0 to 9, what the system does by itself
std::optional<TextView> CommandName(int index); // 0 to 9, what a command SMS asks for

} // namespace tarnex
