#include "platform/linux/systemd_unit.h"

namespace tarnex {

namespace {

constexpr std::string_view kParameters = "[X-Parameters]\n";

// The program's path as a unit file wants it; systemd refuses paths with quotes or backslashes.
std::string Quoted(std::string_view path) {
    std::string quoted = "\"";
    for (const char c : path)
        quoted.append(c == '%' ? 2 : 1, c);
    return quoted + '"';
}

} // namespace

std::string SystemdUnitText(std::string_view executable) {
    return "[Unit]\n"
           "Description=TarnexComm GSM alarm service\n"
           "After=network.target\n"
           "\n"
           "[Service]\n"
           "Type=notify\n"
           "ExecStart=" +
           Quoted(executable) +
           "\n"
           "Restart=on-failure\n"
           "\n"
           "[Install]\n"
           "WantedBy=multi-user.target\n"
           "\n" +
           std::string(kParameters);
}

std::string WithUnitParameter(std::string unit, std::string_view name, std::string_view value) {
    const std::string key = std::string(name) + "=";
    std::size_t section = unit.find(kParameters);
    if (section == std::string::npos) {
        section = unit.size();
        unit += "\n" + std::string(kParameters);
    }
    if (const auto present = unit.find("\n" + key, section); present != std::string::npos)
        unit.erase(present + 1, unit.find('\n', present + 1) - present);
    return unit + key + std::string(value) + "\n";
}

} // namespace tarnex
