#pragma once

#include "device/command_set.h"

#include <optional>

namespace tarnex {

// The line between two parts of a tool's log.
inline constexpr TextView kLogRule = u"---------------------------";

// The model that a firmware version ends in; nothing for others.
std::optional<Text> ModelOf(TextView version);

// Reads the unit's identity and adds it line by line: model, name, version, serial number, and
// the signal quality where it is wanted. The commands must outlive the wait.
Task<> ListIdentity(CommandSet& commands, bool with_signal, std::function<void(const Text&)> add);

} // namespace tarnex
