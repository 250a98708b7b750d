#pragma once

#include "platform/notice_level.h"

#include <string>

namespace tarnex {

// A line for the operator, without its end, where he looks for what this process says: on standard
// error, or, of a service of Windows, which has none, in the event log. The journal and the event
// log learn how much it matters.
void TellOperator(NoticeLevel level, const std::string& line);

// Takes the lines of the debug lists while no window shows them: on standard error, or, of a
// service of Windows, in a file beside the settings. That is kept below 2 MiB with the one before
// it, and only administrators and the service may read it.
class DebugLines {
  public:
    explicit DebugLines(const std::string& settings_path);
    // line: with its end.
    void Write(const std::string& line);

  private:
    std::string path_;
};

} // namespace tarnex
