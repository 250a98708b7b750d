#pragma once

#include "operator/operator_world.h"

namespace tarnex {

// Starts the service, anew if it runs: "" when done, else what stands in the way. Empty where
// nobody can.
using ServiceStart = std::function<std::string()>;

// Asks a person whether the service is to start with new settings, and whether a test alarm is to
// be raised then; does so. Nothing happens without a person.
ExitStatus OfferStart(OperatorWorld& world, const ServiceStart& start);

} // namespace tarnex
