#pragma once

#include "platform/text.h"

#include <string_view>

namespace tarnex {

// The system's words for an error ("connection refused", in any case) in Chinese, for a window;
// words that are not known here as they are. error: UTF-8.
Text SystemErrorInChinese(std::string_view error);

} // namespace tarnex
