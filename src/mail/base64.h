#pragma once

#include <string>
#include <string_view>

namespace tarnex {

// Standard Base64 with padding, without line breaks.
std::string Base64Encode(std::string_view bytes);

} // namespace tarnex
