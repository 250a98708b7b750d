#include "adapters/system/file_lock.h"

#include "adapters/linux/pidfd.h"
#include "adapters/linux/unique_fd.h"
#include "adapters/system/environment.h"
#include "adapters/system/this_system.h"
#include "platform/error_words.h"

#include <cerrno>
#include <charconv>
#include <filesystem>
#include <tuple>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace tarnex {

namespace {

constexpr mode_t kLockFileMode = 0640; // the owner's group may lock it
constexpr mode_t kFolderMode = 0750;
constexpr mode_t kOthers = 0007;
constexpr int kAttempts = 3;

std::string FolderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path();
    return folder.empty() ? "." : folder;
}

// Nothing but the file itself, whatever stands in its place.
UniqueFd OpenOrMake(const std::string& path) {
    constexpr int kFlags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    UniqueFd file(open(path.c_str(), kFlags | O_RDWR | O_CREAT, kLockFileMode));
    const int error = errno;
    if (!file)
        file = UniqueFd(open(path.c_str(), kFlags | O_RDONLY));
    if (!file && errno == ENOENT)
        errno = error; // why it cannot be made
    return file;
}

// Nobody else can have it open: neither its mode nor its owner lets strangers in.
bool IsOurs(const struct stat& file, const struct stat& folder) {
    const bool known_owner =
        file.st_uid == 0 || file.st_uid == geteuid() || file.st_uid == folder.st_uid;
    return known_owner && (file.st_mode & kOthers) == 0;
}

// A file that the superuser makes is for the user of the service, too, whose folder it is in.
void GiveToOwnerOfFolder(int file, const std::string& path) {
    struct stat folder;
    if (geteuid() == 0 && stat(FolderOf(path).c_str(), &folder) == 0)
        std::ignore = fchown(file, folder.st_uid, folder.st_gid);
}

bool Record(int file, pid_t process) {
    const std::string line = std::to_string(process) + "\n";
    return fchmod(file, kLockFileMode) == 0 && ftruncate(file, 0) == 0 &&
           write(file, line.data(), line.size()) == static_cast<ssize_t>(line.size());
}

// 0 when nobody is recorded.
pid_t Recorded(int file) {
    char text[32];
    const ssize_t size = pread(file, text, sizeof text, 0);
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

struct Opened {
    UniqueFd file{};
    bool held = false;     // by another copy of this program; there is no file then
    std::string problem{}; // why there is no file
};

Opened Problem(int error) {
    const std::error_code code(error, std::generic_category());
    return {.problem = error == ELOOP ? "it is a symbolic link" : WordsFor(code)};
}

bool HeldByLiveCopy(int file) {
    const bool locked = flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    return locked && RunsThisProgram(Recorded(file));
}

// One that is not ours is replaced: changing its mode would not close it for who has it open.
Opened OpenOurs(const std::string& path) {
    const std::string parent = FolderOf(path);
    mkdir(parent.c_str(), kFolderMode);
    for (int i = 0; i < kAttempts; ++i) {
        UniqueFd file = OpenOrMake(path);
        struct stat opened, present, folder;
        if (!file || fstat(file.Get(), &opened) != 0 || stat(parent.c_str(), &folder) != 0)
            return Problem(errno);
        if (S_ISDIR(opened.st_mode))
            return Problem(EISDIR);
        if (IsOurs(opened, folder))
            return {.file = std::move(file)};
        if (HeldByLiveCopy(file.Get()))
            return {.held = true};
        // Not the new one that another copy has made meanwhile.
        if (lstat(path.c_str(), &present) == 0 && present.st_ino == opened.st_ino &&
            unlink(path.c_str()) != 0)
            return Problem(errno);
    }
    return {.problem = "others keep putting theirs in its place"};
}

} // namespace

struct FileInstanceLock::Held : UniqueFd {
    explicit Held(UniqueFd file) : UniqueFd(std::move(file)) {}
};

FileInstanceLock::FileInstanceLock() : paths_{WordsOfThisSystem().runtime_folder + "/lock"} {
    if (const std::string own = Environment("XDG_RUNTIME_DIR"); !own.empty())
        paths_.push_back(own + "/tarnexcomm.lock");
}

FileInstanceLock::FileInstanceLock(std::string path) : paths_{std::move(path)} {}

FileInstanceLock::FileInstanceLock(FileInstanceLock&&) noexcept = default;

FileInstanceLock::~FileInstanceLock() = default;

FileInstanceLock::Attempt FileInstanceLock::Try(const std::string& path) {
    Opened opened = OpenOurs(path);
    if (opened.file && flock(opened.file.Get(), LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        opened = Problem(error);
        opened.held = error == EWOULDBLOCK;
    }
    if (!opened.file)
        return {.by_another = opened.held, .problem = opened.problem};
    GiveToOwnerOfFolder(opened.file.Get(), path);
    std::ignore = Record(opened.file.Get(), getpid()); // else there is nobody to find later
    return {.held = std::make_shared<Held>(std::move(opened.file))};
}

void FileInstanceLock::KillLeftOver() {
    const pid_t process = held_ ? Recorded(held_->Get()) : 0;
    if (process <= 0 || process == getpid())
        return;
    // Held before the check, so that the signal cannot meet a later process of the same number.
    const UniqueFd target(pidfd_open(process, 0));
    if (target && RunsThisProgram(process))
        pidfd_send_signal(target.Get(), SIGKILL, nullptr, 0);
}

} // namespace tarnex
