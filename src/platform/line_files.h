#pragma once

#include "platform/error_words.h"

#include <memory>
#include <optional>
#include <string>

namespace tarnex {

// A text file that is read once, line by line. Destroying it closes the file.
class LineFile {
  public:
    // A longer line comes cut to this many bytes.
    static constexpr std::size_t kLongestLine = 1024;

    virtual ~LineFile() = default;
    // The next line without its line feed; nothing at the end, or where the file cannot be read
    // any further.
    virtual std::optional<std::string> ReadLine() = 0;
};

struct OpenedLineFile {
    std::unique_ptr<LineFile> file; // nullptr when there is a problem
    ErrorWords problem{};           // why it cannot be read
};

class LineFiles {
  public:
    virtual ~LineFiles() = default;
    // path: in the system's own bytes.
    virtual OpenedLineFile Open(const std::string& path) = 0;
};

} // namespace tarnex
