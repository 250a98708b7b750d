#pragma once

#include <string>

#include <asio/error_code.hpp>

namespace tarnex {

// "address already in use": the system's words for an operator, to stand inside a sentence.
inline std::string ErrorWords(const asio::error_code& error) {
    std::string words = error.message();
    if (!words.empty() && words[0] >= 'A' && words[0] <= 'Z')
        words[0] = static_cast<char>(words[0] - 'A' + 'a');
    return words;
}

} // namespace tarnex
