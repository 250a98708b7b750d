#include "adapters/system/file_settings_store.h"

#include "adapters/system/plain_file.h"
#include "adapters/system/replace_file.h"
#include "adapters/system/settings_file.h"

#include <thread>

namespace tarnex {

namespace {

constexpr std::size_t kLongestContent = 1 << 20;

// File times may be several milliseconds coarse, and a second on old file systems.
constexpr auto kStampGrain = 1s;
// A file that changed this recently may still be in the middle of being written.
constexpr auto kWriteTime = 20ms;

constexpr int kReadAttempts = 4;
constexpr auto kReadPause = 5ms;
constexpr int kUpdateAttempts = 3;
constexpr int kLockAttempts = 10;
constexpr auto kLockPause = 10ms;
constexpr std::errc kChanging = std::errc::operation_in_progress; // by another program

// One state of the file.
struct Image {
    enum class Kind { kFile, kMissing, kUnusable };
    Kind kind = Kind::kUnusable;
    std::error_code problem; // of one that cannot be used
    FileStamp stamp;
    std::string content; // at most kLongestContent bytes
};

std::chrono::nanoseconds Age(const FileStamp& stamp) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return now - std::chrono::nanoseconds(stamp.changed);
}

bool SameState(const FileStamp& a, const FileStamp& b) {
    return a.file == b.file && a.size == b.size && a.changed == b.changed;
}

// Reads the file as it is. changing: another program is at it.
Image ReadOnce(const std::string& path, bool& changing) {
    Image image;
    PlainFile file(path);
    const FileStamp before = file.Stamp();
    char block[16384];
    while (image.content.size() <= kLongestContent) {
        const std::size_t got = file.Read(block, sizeof block);
        if (got == 0)
            break;
        image.content.append(block, got);
    }
    image.stamp = file.Stamp();
    image.problem = file.Problem();
    if (image.problem == std::errc::not_supported)
        image.problem = std::make_error_code(std::errc::is_a_directory);
    // Half of it would pass for the whole.
    if (!image.problem && image.content.size() > kLongestContent)
        image.problem = std::make_error_code(std::errc::file_too_large);
    changing = image.problem == std::errc::device_or_resource_busy;
    if (image.problem) {
        if (image.problem == std::errc::no_such_file_or_directory)
            image.kind = Image::Kind::kMissing;
        image.content.clear();
        return image;
    }
    image.kind = Image::Kind::kFile;
    // Programs that write in place empty the file first.
    const bool emptied = image.content.empty() && Age(image.stamp) < kWriteTime;
    changing = !SameState(before, image.stamp) || emptied;
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

std::error_code TakeLock(const std::string& path, const FileSettingsStore::Pause& pause,
                         SettingsLock& lock) {
    std::error_code problem;
    for (int i = 0; i < kLockAttempts; ++i) {
        problem = lock.TryTake(path);
        if (problem != std::errc::operation_would_block)
            break;
        pause(kLockPause);
    }
    return problem;
}

} // namespace

FileSettingsStore::FileSettingsStore(std::string path, Pause pause)
    : path_(std::move(path)), pause_(std::move(pause)) {}

void FileSettingsStore::Sleep(Duration duration) {
    std::this_thread::sleep_for(duration);
}

std::optional<FileStamp> FileSettingsStore::Stamp() const {
    PlainFile file(path_);
    FileStamp stamp = file.Stamp();
    if (file.Problem())
        return std::nullopt;
    stamp.settled = Age(stamp) >= kStampGrain;
    return stamp;
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
    SettingsLock lock;
    if (const std::error_code problem = TakeLock(target + ".lock", pause_, lock))
        return problem;
    const std::error_code busy = std::make_error_code(std::errc::device_or_resource_busy);
    std::error_code problem = busy;
    for (int i = 0; i < kUpdateAttempts && (problem == busy || problem == kChanging); ++i)
        problem = UpdateOnce(target, successor, edit);
    RemoveFile(successor);
    return problem;
}

std::error_code FileSettingsStore::UpdateOnce(const std::string& target,
                                              const std::string& successor, const Edit& edit) {
    const std::error_code busy = std::make_error_code(std::errc::device_or_resource_busy);
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
    if (const std::error_code problem = WriteSuccessor(successor, *content, target))
        return problem;
    const FileStamp written = PlainFile(successor).Stamp();
    const Image now = ReadWhole(target, pause_);
    if (now.kind != present.kind || now.content != present.content)
        return std::make_error_code(kChanging);
    std::error_code problem = TakePlace(successor, target);
    for (int i = 1; i < kReadAttempts && problem == busy; ++i) {
        pause_(kReadPause);
        problem = TakePlace(successor, target);
    }
    const FileStamp placed = PlainFile(target).Stamp();
    if (!problem && placed.file == written.file && placed.size == written.size)
        own_write_ = placed;
    return problem;
}

} // namespace tarnex
