#pragma once

#include "platform/settings_store.h"

namespace tarnex {

// A file that is open for reading, which keeps nobody from writing to it and from replacing it.
// Never waits, whatever stands in the file's place.
class PlainFile {
  public:
    explicit PlainFile(const std::string& path);
    PlainFile(const PlainFile&) = delete;
    PlainFile& operator=(const PlainFile&) = delete;
    ~PlainFile();

    // Why it cannot be read (any further). Among them is_a_directory; not_supported: it is neither
    // file nor folder; device_or_resource_busy: for the moment another program keeps it.
    std::error_code Problem() const { return problem_; }
    // The next bytes, at most size; 0 at the end and with a problem.
    std::size_t Read(char* bytes, std::size_t size);
    // Its state at present, without whether that is settled.
    FileStamp Stamp();

  private:
    static constexpr std::intptr_t kNone = -1;
    std::intptr_t file_ = kNone; // what the system knows it by
    std::error_code problem_;
};

} // namespace tarnex
