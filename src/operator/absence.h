#pragma once

#include "operator/json_output.h"
#include "operator/operator_world.h"

namespace tarnex {

// Why the service does not run, as far as the machine tells, and what to do; in one line for
// people. last_status: what it left behind; null for nothing.
std::string WhyAbsent(const OperatorWorld& world, const Json& last_status);

} // namespace tarnex
