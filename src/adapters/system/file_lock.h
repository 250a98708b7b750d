#pragma once

#include "platform/service_controller.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tarnex {

// The instance lock as a lock on a file that records the process that holds it. The file stays
// behind unlocked; where it may not be written to, it is locked all the same and records nobody.
//
// Who can open the file can lock it, and so keep the service from running: only its owner, the
// superuser and the file's group can. One that others may have open is replaced by a new one,
// unless a live copy of this program holds it.
class FileInstanceLock : public InstanceLock {
  public:
    // In the runtime folder of the service; on Linux, for users who may not enter that, in their
    // own.
    FileInstanceLock();
    explicit FileInstanceLock(std::string path);
    FileInstanceLock(FileInstanceLock&&) noexcept;
    ~FileInstanceLock() override;

    // For the operator, in one line: no lock could be had, and why.
    using Notice = std::function<void(const std::string& line)>;
    void SetNotice(Notice notice) { notice_ = std::move(notice); }

    // Makes the file, and the last folder of its path, where they are missing. A file that cannot
    // serve keeps nobody from running, but is told.
    bool Acquire() override;
    // Does nothing unless this object holds the lock.
    void KillLeftOver() override;

  private:
    std::vector<std::string> paths_; // the first one that serves
    struct Held;                     // open and locked
    struct Attempt {
        std::shared_ptr<Held> held{};
        bool by_another = false; // holds it
        std::string problem{};   // why neither could be found out
    };
    static Attempt Try(const std::string& path);
    std::shared_ptr<Held> held_;
    Notice notice_;
};

} // namespace tarnex
