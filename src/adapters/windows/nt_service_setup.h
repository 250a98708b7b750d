#pragma once

#include "platform/exit_status.h"

#include <string>

namespace tarnex {

// What stands in the way of a change to the registered service; words are "" when nothing does.
struct SetupTrouble {
    ExitStatus status = kExitDone;
    std::string words{};
};

// Registers this program as a service that starts with the machine and again after a failure, and
// as the source of its entries in the event log; brings one that is registered already up to date.
SetupTrouble InstallService();
// Stops and removes it, and its source.
SetupTrouble RemoveService();
// Keeps a text under "Parameters" of the service.
void SaveServiceParameter(const std::wstring& name, const std::wstring& value);

} // namespace tarnex
