#include "adapters/system/file_lock.h"

namespace tarnex {

bool FileInstanceLock::Acquire() {
    std::string problems;
    for (const std::string& path : paths_) {
        Attempt attempt = Try(path);
        if (attempt.by_another)
            return false;
        held_ = std::move(attempt.held);
        if (held_)
            return true;
        problems += (problems.empty() ? "" : "; ") + path + ": " + attempt.problem;
    }
    if (notice_)
        notice_(
            "No lock keeps a second program of TarnexComm from using the unit at the same time (" +
            problems + "). Remove what is in its place, or give this user access to its folder.");
    return true;
}

} // namespace tarnex
