#include "adapters/system/system_machine_look.h"
#include "adapters/windows/windows_headers.h"
#include "adapters/windows/windows_text.h"

namespace tarnex {

// The names of ports are no files: the system is asked for what stands behind them.
PortLook SystemMachineLook::Port(const std::string& device) {
    wchar_t target[512];
    const bool there = QueryDosDeviceW(ToWide(device).c_str(), target, 512) != 0;
    return {.there = there, .device = device};
}

std::vector<std::string> SystemMachineLook::Ports() {
    std::vector<std::string> ports;
    for (int number = 1; number <= 20; ++number)
        if (std::string name = "COM" + std::to_string(number); Port(name).there)
            ports.push_back(std::move(name));
    return ports;
}

std::string SystemMachineLook::LockHolder(const std::string&) {
    return "";
}

std::string SystemMachineLook::ClockTrouble() {
    return "";
}

} // namespace tarnex
