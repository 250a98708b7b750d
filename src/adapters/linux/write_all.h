#pragma once

#include <cerrno>
#include <string_view>

#include <unistd.h>

namespace tarnex {

// Writes all the bytes. False, with errno set, when the file does not take them.
inline bool WriteAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            return false;
        bytes.remove_prefix(written > 0 ? std::size_t(written) : 0);
    }
    return true;
}

} // namespace tarnex
