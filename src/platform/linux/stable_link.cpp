#include "platform/linux/stable_link.h"

#include <filesystem>

#include <unistd.h>

namespace tarnex {

namespace fs = std::filesystem;

std::string StableLink::Point(const std::string& target) {
    std::error_code error;
    const fs::file_status present = fs::symlink_status(path_, error);
    if (fs::exists(present) && !fs::is_symlink(present))
        return path_ + " is there already and is not a link";
    const std::string fresh = path_ + "." + std::to_string(getpid());
    fs::create_symlink(target, fresh, error);
    if (!error)
        fs::rename(fresh, path_, error);
    if (error)
        return path_ + ": " + error.message();
    target_ = target;
    return "";
}

void StableLink::Remove() {
    std::error_code ignored; // a link that is gone already is as good
    if (!target_.empty() && fs::read_symlink(path_, ignored) == target_)
        fs::remove(path_, ignored);
    target_.clear();
}

} // namespace tarnex
