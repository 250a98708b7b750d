#pragma once

#include "adapters/windows/windows_headers.h"

#include <cstdint>
#include <utility>

namespace tarnex {

// Owns a handle of the system; none unless one was given.
class WindowsHandle {
  public:
    WindowsHandle() = default;
    explicit WindowsHandle(HANDLE handle) : handle_(handle) {}
    WindowsHandle(WindowsHandle&& other) noexcept
        : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
    WindowsHandle& operator=(WindowsHandle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~WindowsHandle() {
        if (*this)
            CloseHandle(handle_);
    }

    HANDLE Get() const { return handle_; }
    void Release() { handle_ = INVALID_HANDLE_VALUE; }
    explicit operator bool() const { return handle_ && handle_ != INVALID_HANDLE_VALUE; }

  private:
    HANDLE handle_ = INVALID_HANDLE_VALUE;
};

// Others may read the file, write to it and replace it all the same.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

} // namespace tarnex
