#pragma once

#include "platform/exit_status.h"
#include "platform/service_controller.h"

#include <memory>
#include <string>

namespace tarnex {

class AsioLoop;

// Told from Install() and Uninstall() where the system lets them speak: why it could not be done,
// for the operator, and the exit status that says so. On Linux they fail in silence.
using SetupFailed = std::function<void(ExitStatus status, const std::string& why)>;

// The service manager of this machine. The loop must outlive it.
std::unique_ptr<ServiceController> MakeServiceController(AsioLoop& loop, SetupFailed failed);

// The last act of a process that may run as a service: it ends now with that status, and holds
// nothing any more that the next one needs.
void ReportEndOfService(int exit_status);

} // namespace tarnex
