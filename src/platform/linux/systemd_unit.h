#pragma once

#include <string>
#include <string_view>

namespace tarnex {

// The text of the unit file that starts executable (a whole path) as a service with the machine.
std::string SystemdUnitText(std::string_view executable);

// unit with name=value in its last section, the parameters, which systemd itself skips; instead of
// the present value, if there is one.
std::string WithUnitParameter(std::string unit, std::string_view name, std::string_view value);

} // namespace tarnex
