#pragma once

#include "platform/machine_look.h"

namespace tarnex {

// This machine. Where the user may not look at other users' programs, nobody holds anything.
class SystemMachineLook : public MachineLook {
  public:
    PortLook Port(const std::string& device) override;
    std::vector<std::string> Ports() override;
    Holder LockHolder(const std::string& path) override;
    std::string KeptFromService(const std::string& path) override;
    std::string PortHolder(const std::string& address, std::uint16_t port) override;
    std::string ClockTrouble() override;
};

} // namespace tarnex
