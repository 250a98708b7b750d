#pragma once

#include "platform/serial_port.h"

#include <string_view>

namespace tarnex {

// The device's end of a serial line.
class SerialLine {
  public:
    virtual ~SerialLine() = default;
    // Bytes from the device to the PC; lost when no program has the port open.
    virtual void Send(std::string_view bytes) = 0;
};

// Whatever is at the far end of a serial line.
class SerialDevice {
  public:
    virtual ~SerialDevice() = default;

    // The line is there until Unplugged().
    virtual void Plugged(SerialLine& line) = 0;
    virtual void Unplugged() = 0;
    // A program opened the port with these settings, or closed it. A line that cannot know tells
    // neither.
    virtual void Opened(const LineSettings&) {}
    virtual void Closed() {}
    // What one write of the PC brought. The device answers later, from the loop.
    virtual void Received(std::string_view bytes) = 0;
};

} // namespace tarnex
