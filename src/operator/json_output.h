#pragma once

#include "platform/json_writer.h"

#include <string>

#include <nlohmann/json.hpp>

namespace tarnex {

using Json = nlohmann::ordered_json; // in the order in which it was made

// For programs, with a line end; a byte that is not UTF-8, as in a path, becomes U+FFFD. indent: of
// a level, in blanks; -1 for one line.
inline std::string JsonText(const Json& json, int indent = 2) {
    return EscapeJsonControls(json.dump(indent, ' ', false, Json::error_handler_t::replace)) + '\n';
}

} // namespace tarnex
