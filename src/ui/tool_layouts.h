#pragma once

#include "ui/layout.h"

namespace tarnex {

// The windows of the service tools.
Layout FlasherLayout();
Layout ConsoleLayout();

} // namespace tarnex
