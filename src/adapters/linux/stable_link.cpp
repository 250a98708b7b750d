#include "adapters/linux/stable_link.h"

#include <unistd.h>

namespace tarnex {

namespace fs = std::filesystem;

// The link of a program that was killed leads to what is gone, among what is of the same kind.
bool StableLink::LeftOver(const fs::path& present, const fs::path& target) const {
    std::error_code error;
    return present.parent_path() == target.parent_path() && !fs::exists(path_, error) && !error;
}

std::string StableLink::Point(const std::string& target) {
    std::error_code error;
    if (const fs::file_status there = fs::symlink_status(path_, error);
        fs::exists(there) && !fs::is_symlink(there))
        return path_ + " is there already and is not a link";
    const fs::path present = fs::read_symlink(path_, error);
    if (!error && present != target_ && present != target && !LeftOver(present, target))
        return path_ + " leads to " + present.string() + " already; remove it or name another";
    const std::string fresh = path_ + "." + std::to_string(getpid());
    fs::create_symlink(target, fresh, error);
    if (!error) {
        fs::rename(fresh, path_, error);
        if (std::error_code ignored; error)
            fs::remove(fresh, ignored);
    }
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
