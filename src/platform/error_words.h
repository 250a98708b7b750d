#pragma once

#include "platform/text.h"

#include <string>
#include <string_view>
#include <system_error>

namespace tarnex {

// Why something failed, to stand inside a sentence: "connection refused". This program's own words
// for an error of the system, whose words would come in the language of its user; "system error 71"
// for an error that has none.
std::string WordsFor(const std::error_code& error);

// The same in Chinese, "连接被拒绝", also of what adapters say of their own; other words as they
// are.
Text InChinese(std::string_view english);

} // namespace tarnex
