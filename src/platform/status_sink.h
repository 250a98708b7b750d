#pragma once

#include <string>

namespace tarnex {

// Where the status text goes, for other programs to read: the status file.
class StatusSink {
  public:
    virtual ~StatusSink() = default;
    // Puts text in place of the last one, in one step for readers. "" when that is done, else what
    // stands in the way, in words for an operator; readers have the last text then, or none.
    virtual std::string Replace(const std::string& text) = 0;
};

} // namespace tarnex
