#pragma once

#include "platform/text.h"

#include <system_error>

namespace tarnex {

// Why something failed, to stand inside a sentence: "connection refused", "连接被拒绝".
struct ErrorWords {
    std::string english;
    Text chinese;
};

// This program's own words for an error of the system, whose words would come in the language of
// its user; "system error 71" for an error that has none.
ErrorWords WordsFor(const std::error_code& error);

// The same in Chinese, where only the English words have come along; other words as they are.
Text InChinese(std::string_view english);

} // namespace tarnex
