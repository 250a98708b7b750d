#pragma once

#include "platform/serial_port.h"

namespace tarnex {

// The device of every port: the configured one, or the default where that is empty (COM1 to COM4
// the serial ports of the board, COM5 to COM12 USB adapters, COM13 to COM20 USB modems).
SerialPaths SerialDevicePaths(const SerialPaths& configured);

} // namespace tarnex
