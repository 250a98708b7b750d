#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <system_error>

namespace tarnex {

// Tells one state of the settings file from another.
struct FileStamp {
    std::uint64_t file = 0;   // which file it is (an atomic replacement makes a new one)
    std::uint64_t size = 0;   // bytes
    std::int64_t changed = 0; // time of the last change, ns
    bool settled = false;     // old enough that a further change cannot bear the same stamp
    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

// What one reading of the settings file gave.
struct SettingsReading {
    std::string content;     // "" with a problem
    std::error_code problem; // no_such_file_or_directory when there is no file
    // The file is there, or may be, and cannot be read: nobody knows what it says.
    bool Unreadable() const { return problem && problem != std::errc::no_such_file_or_directory; }
};

// The settings file as a whole.
class SettingsStore {
  public:
    virtual ~SettingsStore() = default;

    // The file's name for people.
    virtual std::string Name() const = 0;
    // Nothing when there is no readable file.
    virtual std::optional<FileStamp> Stamp() const = 0;
    // The whole content from one moment: read again when the file changed meanwhile. A file of more
    // than 1 MiB is not read: file_too_large.
    virtual SettingsReading Read() const = 0;
    // Replaces the content by edit(present content) in one atomic step, under the lock that all
    // programs of this system use; a file that another program changes meanwhile is read and
    // edited again. No file counts as empty content. Owner and mode stay. edit may run more than
    // once; when it returns nothing, nothing is written. False when the file cannot be written.
    using Edit = std::function<std::optional<std::string>(const std::string&)>;
    virtual bool Update(const Edit& edit) = 0;
    // What stood in the way of the last Update; nothing after one that returned true. Among them
    // operation_would_block: another program keeps the lock; file_too_large: the file is longer
    // than 1 MiB; device_or_resource_busy: another program has it open and lets nobody else;
    // operation_in_progress: another program changes it all the time.
    virtual std::error_code Problem() const = 0;
};

} // namespace tarnex
