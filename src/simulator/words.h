#pragma once

#include "platform/clock.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>
#include <utility>

namespace tarnex {

inline constexpr std::string_view kBlanks = " \t\r";

// Without the blanks at both ends.
inline std::string_view StripBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == text.npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// The first word of text and what follows it.
inline std::pair<std::string_view, std::string_view> SplitWord(std::string_view text) {
    const std::size_t end = std::min(text.find_first_of(kBlanks), text.size());
    return {text.substr(0, end), StripBlanks(text.substr(end))};
}

// The number that text is, and nothing else.
template <class Number>
std::optional<Number> ReadNumber(std::string_view text) {
    Number number{};
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc() && stop == text.data() + text.size();
    return whole ? std::optional(number) : std::nullopt;
}

// The same for a whole number from 0 to highest.
inline std::optional<int> ReadNumberUpTo(std::string_view text, int highest) {
    const std::optional<int> number = ReadNumber<int>(text);
    return number && *number >= 0 && *number <= highest ? number : std::nullopt;
}

// "12.5" seconds, 0 to 1e9.
inline std::optional<Duration> ReadSeconds(std::string_view text) {
    const std::optional<double> seconds = ReadNumber<double>(text);
    if (!seconds || !(*seconds >= 0 && *seconds <= 1e9))
        return std::nullopt;
    return std::chrono::round<Duration>(std::chrono::duration<double>(*seconds));
}

} // namespace tarnex
