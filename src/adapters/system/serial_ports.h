#pragma once

#include "adapters/system/serial_names.h"
#include "platform/serial_port.h"

namespace tarnex {

class AsioLoop;

// The serial lines of this machine. The loop must outlive what is open.
class SystemSerialPorts : public SerialPorts {
  public:
    // An empty path: that port is absent.
    SystemSerialPorts(AsioLoop& loop, SerialPaths paths) : loop_(loop), paths_(std::move(paths)) {}

    // For the ports that are opened from now on.
    void SetPaths(SerialPaths paths) { paths_ = std::move(paths); }

    OpenedPort Open(int number, const LineSettings& settings, SerialEvents events) override;
    std::string DeviceName(int number) const override;

  private:
    AsioLoop& loop_;
    SerialPaths paths_;
};

} // namespace tarnex
