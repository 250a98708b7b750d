#pragma once

#include "platform/json_writer.h"

#include <charconv>
#include <string>

#include <nlohmann/json.hpp>

namespace tarnex {

using Json = nlohmann::ordered_json; // in the order in which it was made

// For programs, with a line end; a byte that is not UTF-8, as in a path, becomes U+FFFD. indent: of
// a level, in blanks; -1 for one line.
inline std::string JsonText(const Json& json, int indent = 2) {
    return EscapeJsonControls(json.dump(indent, ' ', false, Json::error_handler_t::replace)) + '\n';
}

// A text that is a whole number as that number.
inline Json NumberOr(const std::string& text, const Json& otherwise) {
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [stopped, problem] = std::from_chars(text.data(), end, number);
    return problem == std::errc() && stopped == end ? Json(number) : otherwise;
}

} // namespace tarnex
