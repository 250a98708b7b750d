#pragma once

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

namespace tarnex {

inline constexpr std::string_view kCommandBlanks = " \t\r";

// Without the blanks at both ends.
inline std::string_view StripBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kCommandBlanks);
    if (first == text.npos)
        return {};
    return text.substr(first, text.find_last_not_of(kCommandBlanks) - first + 1);
}

// The first word of text and what follows it.
inline std::pair<std::string_view, std::string_view> SplitWord(std::string_view text) {
    const std::size_t end = std::min(text.find_first_of(kCommandBlanks), text.size());
    return {text.substr(0, end), StripBlanks(text.substr(end))};
}

// True when text is a number and nothing else; number is changed only then.
template <class Number>
bool ReadNumber(std::string_view text, Number& number) {
    Number read{};
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), read);
    const bool whole = error == std::errc() && stop == text.data() + text.size();
    if (whole)
        number = read;
    return whole;
}

} // namespace tarnex
