#include "adapters/system/service_restart.h"

#include "adapters/linux/systemd_calls.h"

namespace tarnex {

namespace {

constexpr Duration kStartLimit = 2min; // systemd's own is shorter

} // namespace

std::string RestartService() {
    const auto result = RunCommand({"systemctl", "restart", "tarnexcomm"}, kStartLimit);
    if (!result)
        return "systemctl cannot be run, or does not end";
    return result->succeeded ? "" : "see: systemctl status tarnexcomm";
}

} // namespace tarnex
