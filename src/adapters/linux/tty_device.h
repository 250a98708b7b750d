#pragma once

#include "adapters/linux/unique_fd.h"
#include "platform/serial_port.h"

namespace tarnex {

struct OpenedTty {
    UniqueFd descriptor{}; // non-blocking; none unless status is kOk
    PortStatus status = PortStatus::kOk;
};

// Opens the terminal device at path for this process alone and sets the line up: raw, no flow
// control, modem lines ignored, nothing waiting in either direction. Never blocks.
OpenedTty OpenTty(const std::string& path, const LineSettings& settings);

// Comes before the descriptor is closed: gives up the exclusive hold, and what has not left yet is
// dropped, since closing would wait for it.
void ReleaseTty(int descriptor);

// The speed that the line is set to; 0 for one that is not usual for a serial line.
int TtyBaud(int descriptor);

// Bytes that the driver has taken and not sent yet.
std::size_t TtyOutQueue(int descriptor);

} // namespace tarnex
