#include "platform/linux/file_lock.h"

#include "platform/linux/pidfd.h"

#include <cerrno>
#include <charconv>
#include <tuple>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace tarnex {

namespace {

constexpr mode_t kMode = 0644; // everybody may lock the file, its owner may write to it

UniqueFd OpenForReading(const std::string& path) {
    return UniqueFd(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
}

bool Record(int file, pid_t process) {
    const std::string line = std::to_string(process) + "\n";
    return fchmod(file, kMode) == 0 && ftruncate(file, 0) == 0 &&
           write(file, line.data(), line.size()) == static_cast<ssize_t>(line.size());
}

// 0 when nobody is recorded.
pid_t Recorded(const std::string& path) {
    const UniqueFd file = OpenForReading(path);
    char text[32];
    const ssize_t size = read(file.Get(), text, sizeof text);
    pid_t process = 0;
    if (size > 0)
        std::from_chars(text, text + size, process);
    return process;
}

bool RunsThisProgram(pid_t process) {
    struct stat own {};
    struct stat other {};
    return stat("/proc/self/exe", &own) == 0 &&
           stat(("/proc/" + std::to_string(process) + "/exe").c_str(), &other) == 0 &&
           own.st_dev == other.st_dev && own.st_ino == other.st_ino;
}

} // namespace

bool FileInstanceLock::Acquire() {
    UniqueFd file(
        open(path_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, kMode));
    const bool may_record = static_cast<bool>(file);
    if (!file)
        file = OpenForReading(path_);
    if (file && flock(file.Get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        return false;
    if (may_record)
        std::ignore = Record(file.Get(), getpid()); // without it there is nobody to find later
    held_ = std::move(file);
    return true;
}

void FileInstanceLock::KillLeftOver() {
    const pid_t process = held_ ? Recorded(path_) : 0;
    if (process <= 0 || process == getpid())
        return;
    // Held before the check, so that the signal cannot meet a later process of the same number.
    const UniqueFd target(pidfd_open(process, 0));
    if (target && RunsThisProgram(process))
        pidfd_send_signal(target.Get(), SIGKILL, nullptr, 0);
}

} // namespace tarnex
