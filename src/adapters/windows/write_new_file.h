#pragma once

#include "adapters/windows/windows_headers.h"

#include <string>
#include <string_view>
#include <system_error>

namespace tarnex {

// Makes a file at path with that content, after removing what is there. access: nullptr for that of
// its folder. flushed: on the disk.
std::error_code WriteNewFile(const std::string& path, std::string_view content,
                             SECURITY_ATTRIBUTES* access, bool flushed);

} // namespace tarnex
