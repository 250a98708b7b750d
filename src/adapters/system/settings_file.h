#pragma once

#include <cstdint>
#include <string>
#include <system_error>

namespace tarnex {

// What writing the settings file asks of the system.

// The file that path leads to, there or not.
std::string FollowLinks(const std::string& path);

// Makes a new file at path with that content on the disk, to take the place of target. A file there
// is removed first. The new one gets owner and mode of target, at the latest when it takes its
// place.
std::error_code WriteSuccessor(const std::string& path, const std::string& content,
                               const std::string& target);
// In one step for readers. device_or_resource_busy: for the moment another program keeps target.
std::error_code TakePlace(const std::string& successor, const std::string& target);

// A lock between programs as a file, which everybody who may enter the folder can take.
class SettingsLock {
  public:
    SettingsLock() = default;
    SettingsLock(const SettingsLock&) = delete;
    SettingsLock& operator=(const SettingsLock&) = delete;
    ~SettingsLock();

    // Held as long as this lives. operation_would_block: another program keeps it.
    std::error_code TryTake(const std::string& path);

  private:
    static constexpr std::intptr_t kNone = -1;
    std::intptr_t file_ = kNone;
};

} // namespace tarnex
