#pragma once

#include "platform/clock.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tarnex {

// One line of a script: "12.5 ac lost".
struct ScriptStep {
    Duration at; // from the start of the script
    std::string command;
};

// The steps of a script, or what is wrong with its first bad line: "line 3: ...". Empty lines and
// lines that begin with "#" do nothing.
std::variant<std::vector<ScriptStep>, std::string> ParseUnitScript(std::string_view script);

// "12.5" seconds, 0 to 1e9; nothing for any other text.
std::optional<Duration> ParseSeconds(std::string_view text);

} // namespace tarnex
