#pragma once

#include "platform/serial_port.h"

namespace tarnex {

// The device of every port: the configured one, or the system's default where that is empty. On
// Linux COM1 to COM4 are the serial ports of the board, COM5 to COM12 USB adapters and COM13 to
// COM20 USB modems; on Windows the port has its own name.
SerialPaths SerialDevicePaths(const SerialPaths& configured);

// Whether the words of an operator are the path of a device, and not the number or name of a port.
bool IsDevicePath(std::string_view words);

} // namespace tarnex
