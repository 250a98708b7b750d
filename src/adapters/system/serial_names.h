#pragma once

#include <array>
#include <string>

namespace tarnex {

// Element i belongs to COM<i + 1>.
using SerialPaths = std::array<std::string, 20>;

// The device of every port: the configured one, or the default where that is empty (COM1 to COM4
// the serial ports of the board, COM5 to COM12 USB adapters, COM13 to COM20 USB modems).
SerialPaths SerialDevicePaths(const SerialPaths& configured);

} // namespace tarnex
