#include "adapters/linux/systemd_unit.h"

#include "systemd_unit_template.h"

namespace tarnex {

namespace {

constexpr std::string_view kParameters = "\n[X-Parameters]\n";

// A path between quotes in a unit file; systemd refuses paths with quotes or backslashes.
std::string Escaped(std::string_view path) {
    std::string escaped;
    for (const char c : path)
        escaped.append(c == '%' ? 2 : 1, c);
    return escaped;
}

void Replace(std::string& unit, std::string_view present, std::string_view wanted) {
    if (const auto at = unit.find(present); at != std::string::npos)
        unit.replace(at, present.size(), wanted);
}

bool StandsInAHomeFolder(std::string_view path) {
    return path.starts_with("/home/") || path.starts_with("/root/");
}

} // namespace

std::string SystemdUnitText(std::string_view executable, bool user_exists) {
    std::string unit(kSystemdUnitTemplate);
    Replace(unit, "@TARNEXCOMM@", Escaped(executable));
    if (!user_exists)
        Replace(unit, "User=" + std::string(kServiceUser) + "\n", "");
    if (StandsInAHomeFolder(executable))
        Replace(unit, "ProtectHome=yes", "ProtectHome=read-only");
    return unit;
}

std::string WithUnitParameter(std::string unit, std::string_view name, std::string_view value) {
    const std::string key = std::string(name) + "=";
    std::size_t section = unit.find(kParameters);
    if (section == std::string::npos) {
        section = unit.size();
        unit += kParameters;
    }
    if (const auto present = unit.find("\n" + key, section); present != std::string::npos)
        unit.erase(present + 1, unit.find('\n', present + 1) - present);
    return unit + key + std::string(value) + "\n";
}

} // namespace tarnex
