#pragma once

#include "platform/result.h"

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

class LineFiles {
  public:
    virtual ~LineFiles() = default;
    // path: UTF-8. The trouble is words that InChinese() knows.
    virtual Result<std::unique_ptr<LineFile>> Open(const std::string& path) = 0;
};

} // namespace tarnex
