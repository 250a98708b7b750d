#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace tarnex {

// Windows speaks UTF-16, this system's own texts and paths are UTF-8.
std::wstring ToWide(std::string_view utf8);
std::string FromWide(std::wstring_view wide);

// Why the last call of Windows failed, in the numbers that are the same on every system; one that
// these do not know stays as Windows has it. device_or_resource_busy: another program keeps the
// file.
std::error_code LastError();

} // namespace tarnex
