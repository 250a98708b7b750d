#pragma once

#include <utility>

#include <unistd.h>

namespace tarnex {

// Owns a file descriptor and closes it.
class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~UniqueFd() {
        if (fd_ >= 0)
            close(fd_);
    }

    // -1 when there is none.
    int Get() const { return fd_; }
    // Leaves the closing to the caller.
    int Release() { return std::exchange(fd_, -1); }
    explicit operator bool() const { return fd_ >= 0; }

  private:
    int fd_ = -1;
};

} // namespace tarnex
