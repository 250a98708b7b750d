#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace tarnex {

// Makes a file at path with that content, after removing what is there; flushed: on the disk.
std::error_code WriteNewFile(const std::string& path, std::string_view content, bool flushed);

} // namespace tarnex
