#pragma once

#include "adapters/linux/unique_fd.h"
#include "platform/service_controller.h"

#include <string>
#include <vector>

namespace tarnex {

// The instance lock as a lock on a file that records the process that holds it. The file stays
// behind unlocked; where it may not be written to, it is locked all the same and records nobody.
//
// Who can open the file can lock it, and so keep the service from running: only its owner, the
// superuser and the file's group can. One that others may have open is replaced by a new one.
class FileInstanceLock : public InstanceLock {
  public:
    // In the runtime folder of the service; for users who may not enter that, in their own.
    FileInstanceLock();
    explicit FileInstanceLock(std::string path) : paths_{std::move(path)} {}

    // Makes the file, and the last folder of its path, where they are missing. A file that cannot
    // be opened at all keeps nobody from running.
    bool Acquire() override;
    // Does nothing unless this object holds the lock.
    void KillLeftOver() override;

  private:
    std::vector<std::string> paths_; // the first one that can be opened
    UniqueFd held_;
};

} // namespace tarnex
