#include "adapters/system/settings_file.h"

#include "adapters/linux/last_error.h"
#include "adapters/linux/unique_fd.h"
#include "adapters/linux/write_all.h"

#include <cstdio>
#include <filesystem>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace tarnex {

namespace {

constexpr mode_t kNewSettingsMode = 0640;
constexpr mode_t kLockMode = 0644; // whoever may enter the folder may take part
constexpr int kMostLinksFollowed = 40;

// For everybody who may enter the folder, whatever umask this program was started with.
int OpenLock(const std::string& path) {
    constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
    int lock = open(path.c_str(), kFlags | O_CREAT | O_EXCL, kLockMode);
    if (lock >= 0)
        fchmod(lock, kLockMode);
    else if (errno == EEXIST)
        lock = open(path.c_str(), kFlags);
    return lock;
}

} // namespace

std::string FollowLinks(const std::string& path) {
    std::filesystem::path followed = path;
    std::error_code error;
    for (int i = 0; i < kMostLinksFollowed && std::filesystem::is_symlink(followed, error); ++i)
        followed = followed.parent_path() / std::filesystem::read_symlink(followed, error);
    return followed.string();
}

std::error_code WriteSuccessor(const std::string& path, const std::string& content,
                               const std::string& target) {
    unlink(path.c_str());
    const UniqueFd file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    struct stat made {};
    struct stat present {};
    if (!file || fstat(file.Get(), &made) != 0)
        return LastError();
    bool good = WriteAll(file.Get(), content);
    mode_t mode = kNewSettingsMode;
    if (good && stat(target.c_str(), &present) == 0) {
        mode = present.st_mode & 07777;
        if (made.st_uid != present.st_uid || made.st_gid != present.st_gid)
            good = fchown(file.Get(), present.st_uid, present.st_gid) == 0;
    }
    good = good && fchmod(file.Get(), mode) == 0 && fsync(file.Get()) == 0;
    return good ? std::error_code() : LastError();
}

// The folder is not flushed: a power failure now brings back the old file, whole.
std::error_code TakePlace(const std::string& successor, const std::string& target) {
    return std::rename(successor.c_str(), target.c_str()) == 0 ? std::error_code() : LastError();
}

SettingsLock::~SettingsLock() {
    if (file_ != kNone)
        close(static_cast<int>(file_));
}

std::error_code SettingsLock::TryTake(const std::string& path) {
    if (file_ == kNone)
        file_ = OpenLock(path);
    if (file_ == kNone)
        return LastError();
    const bool taken = flock(static_cast<int>(file_), LOCK_EX | LOCK_NB) == 0;
    return taken ? std::error_code() : std::make_error_code(std::errc::operation_would_block);
}

} // namespace tarnex
