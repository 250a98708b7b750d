#include "adapters/system/file_settings_store.h"

#include "adapters/linux/unique_fd.h"
#include "adapters/linux/write_all.h"

#include <cerrno>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace tarnex {

namespace {

constexpr std::size_t kLongestContent = 1 << 20;
constexpr mode_t kNewFileMode = 0640;
constexpr mode_t kLockMode = 0644; // whoever may enter the folder may take part
constexpr int kMostLinks = 40;

// File times may be several milliseconds coarse, and a second on old file systems.
constexpr auto kStampGrain = 1s;
// A file that changed this recently may still be in the middle of being written.
constexpr auto kWriteTime = 20ms;

constexpr int kReadAttempts = 4;
constexpr auto kReadPause = 5ms;
constexpr int kUpdateAttempts = 3;
constexpr int kLockAttempts = 10;
constexpr auto kLockPause = 10ms;

// One state of the file.
struct Image {
    enum class Kind { kFile, kMissing, kUnusable };
    Kind kind = Kind::kUnusable;
    std::error_code problem; // of one that cannot be used
    FileStamp stamp;
    uid_t owner = 0;
    gid_t group = 0;
    mode_t mode = 0;
    std::string content; // at most kLongestContent bytes
};

std::error_code LastError() {
    return {errno != 0 ? errno : EIO, std::generic_category()};
}

std::chrono::nanoseconds Age(const FileStamp& stamp) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return now - std::chrono::nanoseconds(stamp.changed);
}

// The time of the last change of state is used: unlike that of the content, nobody can set it.
FileStamp StampOf(const struct stat& status) {
    FileStamp stamp;
    stamp.file = status.st_ino;
    stamp.size = static_cast<std::uint64_t>(status.st_size);
    stamp.changed = status.st_ctim.tv_sec * 1'000'000'000LL + status.st_ctim.tv_nsec;
    stamp.settled = Age(stamp) >= kStampGrain;
    return stamp;
}

bool SameState(const FileStamp& a, const FileStamp& b) {
    return a.file == b.file && a.size == b.size && a.changed == b.changed;
}

// The file that path leads to, there or not.
std::string FollowLinks(std::filesystem::path path) {
    std::error_code error;
    for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(path, error); ++i)
        path = path.parent_path() / std::filesystem::read_symlink(path, error);
    return path.string();
}

// A failing disk must not pass for the end of the file.
std::error_code ReadUpTo(int fd, std::size_t most, std::string& content) {
    while (content.size() < most) {
        char block[16384];
        const ssize_t got = read(fd, block, std::min(sizeof block, most - content.size()));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return LastError();
        if (got == 0)
            break;
        content.append(block, static_cast<std::size_t>(got));
    }
    return {};
}

// Reads the file as it is. changing: another program is at it.
Image ReadOnce(const std::string& path, bool& changing) {
    Image image;
    changing = false;
    // Never waits, whatever stands in the file's place.
    const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file) {
        image.kind = errno == ENOENT ? Image::Kind::kMissing : Image::Kind::kUnusable;
        image.problem = LastError();
        return image;
    }
    struct stat before, after;
    image.problem = std::make_error_code(std::errc::is_a_directory);
    if (fstat(file.Get(), &before) != 0 || !S_ISREG(before.st_mode))
        return image;
    std::string content;
    image.problem = ReadUpTo(file.Get(), kLongestContent + 1, content);
    if (!image.problem && fstat(file.Get(), &after) != 0)
        image.problem = LastError();
    // Half of it would pass for the whole.
    if (!image.problem && content.size() > kLongestContent)
        image.problem = std::make_error_code(std::errc::file_too_large);
    if (image.problem)
        return image;
    image.kind = Image::Kind::kFile;
    image.content = std::move(content);
    image.stamp = StampOf(after);
    image.owner = after.st_uid;
    image.group = after.st_gid;
    image.mode = after.st_mode & 07777;
    // Programs that write in place empty the file first.
    const bool emptied = image.content.empty() && Age(image.stamp) < kWriteTime;
    changing = !SameState(StampOf(before), image.stamp) || emptied;
    return image;
}

Image ReadWhole(const std::string& path, const FileSettingsStore::Pause& pause) {
    bool changing = false;
    Image image = ReadOnce(path, changing);
    for (int i = 1; i < kReadAttempts && changing; ++i) {
        pause(kReadPause);
        image = ReadOnce(path, changing);
    }
    return image;
}

// Makes a new file with that content on the disk, to take the place of the present one.
std::error_code WriteSuccessor(const std::string& path, const std::string& content,
                               const Image& present, UniqueFd& file) {
    unlink(path.c_str());
    file = UniqueFd(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    struct stat made;
    if (!file || fstat(file.Get(), &made) != 0)
        return LastError();
    bool good = WriteAll(file.Get(), content);
    mode_t mode = kNewFileMode;
    if (present.kind == Image::Kind::kFile) {
        mode = present.mode;
        if (made.st_uid != present.owner || made.st_gid != present.group)
            good = good && fchown(file.Get(), present.owner, present.group) == 0;
    }
    good = good && fchmod(file.Get(), mode) == 0 && fsync(file.Get()) == 0;
    return good ? std::error_code() : LastError();
}

// For everybody who may enter the folder, whatever umask this program was started with.
UniqueFd OpenLock(const std::string& path) {
    constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
    UniqueFd lock(open(path.c_str(), kFlags | O_CREAT | O_EXCL, kLockMode));
    if (lock)
        fchmod(lock.Get(), kLockMode);
    else if (errno == EEXIST)
        lock = UniqueFd(open(path.c_str(), kFlags));
    return lock;
}

// Held as long as the descriptor is open.
std::error_code TakeLock(const std::string& path, const FileSettingsStore::Pause& pause,
                         UniqueFd& lock) {
    lock = OpenLock(path);
    if (!lock)
        return LastError();
    for (int i = 0; i < kLockAttempts; ++i) {
        if (flock(lock.Get(), LOCK_EX | LOCK_NB) == 0)
            return {};
        pause(kLockPause);
    }
    return std::make_error_code(std::errc::operation_would_block);
}

} // namespace

FileSettingsStore::FileSettingsStore(std::string path, Pause pause)
    : path_(std::move(path)), pause_(std::move(pause)) {}

void FileSettingsStore::Sleep(Duration duration) {
    std::this_thread::sleep_for(duration);
}

std::optional<FileStamp> FileSettingsStore::Stamp() const {
    struct stat status;
    if (stat(path_.c_str(), &status) != 0 || !S_ISREG(status.st_mode) ||
        access(path_.c_str(), R_OK) != 0)
        return std::nullopt;
    return StampOf(status);
}

SettingsReading FileSettingsStore::Read() const {
    Image image = ReadWhole(path_, pause_);
    return {.content = std::move(image.content), .problem = image.problem};
}

bool FileSettingsStore::Update(const Edit& edit) {
    problem_ = TryUpdate(edit);
    return !problem_;
}

std::error_code FileSettingsStore::TryUpdate(const Edit& edit) {
    const std::string target = FollowLinks(path_);
    const std::string successor = target + ".new";
    UniqueFd lock;
    if (const std::error_code problem = TakeLock(target + ".lock", pause_, lock))
        return problem;
    const std::error_code busy = std::make_error_code(std::errc::device_or_resource_busy);
    std::error_code problem = busy;
    for (int i = 0; i < kUpdateAttempts && problem == busy; ++i)
        problem = UpdateOnce(target, successor, edit);
    unlink(successor.c_str());
    return problem;
}

std::error_code FileSettingsStore::UpdateOnce(const std::string& target,
                                              const std::string& successor, const Edit& edit) {
    const Image present = ReadWhole(target, pause_);
    if (present.kind == Image::Kind::kUnusable)
        return present.problem;
    // A program that writes in place would lose its second half with the file it writes to.
    const bool own = own_write_ && SameState(*own_write_, present.stamp);
    if (present.kind == Image::Kind::kFile && !own && Age(present.stamp) < kWriteTime)
        pause_(kWriteTime);
    const std::optional<std::string> content = edit(present.content);
    if (!content)
        return {};
    UniqueFd file;
    if (const std::error_code problem = WriteSuccessor(successor, *content, present, file))
        return problem;
    const Image now = ReadWhole(target, pause_);
    if (now.kind != present.kind || now.content != present.content)
        return std::make_error_code(std::errc::device_or_resource_busy);
    // The folder is not flushed: a power failure now brings back the old file, whole.
    if (rename(successor.c_str(), target.c_str()) != 0)
        return LastError();
    struct stat status;
    if (fstat(file.Get(), &status) == 0)
        own_write_ = StampOf(status);
    return {};
}

} // namespace tarnex
