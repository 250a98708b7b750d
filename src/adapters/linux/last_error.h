#pragma once

#include <cerrno>
#include <system_error>

namespace tarnex {

// Why the last call of the system failed.
inline std::error_code LastError() {
    return {errno != 0 ? errno : EIO, std::generic_category()};
}

} // namespace tarnex
