#pragma once

#include <string>
#include <string_view>

namespace tarnex {

// The user that the service runs as.
inline constexpr const char* kServiceUser = "tarnexcomm";

// The text of the unit file that starts executable (a whole path) as a service with the machine:
// that of the package, made to work for a program that nobody has packaged. user_exists: whether
// the machine has kServiceUser; otherwise the superuser runs it, within the same limits.
std::string SystemdUnitText(std::string_view executable, bool user_exists);

// unit with name=value in its last section, the parameters, which systemd itself skips; instead of
// the present value, if there is one.
std::string WithUnitParameter(std::string unit, std::string_view name, std::string_view value);

} // namespace tarnex
