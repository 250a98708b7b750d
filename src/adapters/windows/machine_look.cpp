#include "adapters/system/system_machine_look.h"
#include "adapters/windows/windows_headers.h"
#include "adapters/windows/windows_text.h"

#include <algorithm>

namespace tarnex {

// The names of ports are no files: the system is asked for what stands behind them.
PortLook SystemMachineLook::Port(const std::string& device) {
    constexpr std::string_view kPrefix = "\\\\.\\";
    std::string name = device.substr(device.starts_with(kPrefix) ? kPrefix.size() : 0);
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::toupper(c); });
    wchar_t target[512];
    const bool there = QueryDosDeviceW(ToWide(name).c_str(), target, 512) != 0;
    return {.there = there, .device = name};
}

std::vector<std::string> SystemMachineLook::Ports() {
    std::vector<std::string> ports;
    for (int number = 1; number <= 20; ++number)
        if (std::string name = "COM" + std::to_string(number); Port(name).there)
            ports.push_back(std::move(name));
    return ports;
}

Holder SystemMachineLook::LockHolder(const std::string&) {
    return {};
}

std::string SystemMachineLook::KeptFromService(const std::string&) {
    return "";
}

std::string SystemMachineLook::ClockTrouble() {
    return "";
}

} // namespace tarnex
