#pragma once

#include "platform/linux/unique_fd.h"
#include "platform/service_controller.h"

#include <string>

namespace tarnex {

// The instance lock as a lock on a file that records the process that holds it. The file stays
// behind unlocked; where it belongs to another user, it is locked all the same and records nobody.
class FileInstanceLock : public InstanceLock {
  public:
    explicit FileInstanceLock(std::string path = "/run/lock/tarnexcomm.lock")
        : path_(std::move(path)) {}

    // A file that cannot be opened at all keeps nobody from running.
    bool Acquire() override;
    // Does nothing unless this object holds the lock.
    void KillLeftOver() override;

  private:
    std::string path_;
    UniqueFd held_;
};

} // namespace tarnex
