#pragma once

#include "platform/service_controller.h"

#include <memory>

namespace tarnex {

class AsioLoop;

// The service manager of this machine. The loop must outlive it.
std::unique_ptr<ServiceController> MakeServiceController(AsioLoop& loop);

} // namespace tarnex
