#pragma once

#include <functional>
#include <memory>
#include <string>

namespace tarnex {

class AsioLoop;

// The end of the user's session, or of the machine, as Windows tells it to programs with windows:
// those are not told in their console any more.
class SessionEnd {
  public:
    // Both are called from the loop, which must outlive this. why_not: what keeps the session from
    // ending, for its user; "" for nothing. ended: the system waits some seconds for the process to
    // end.
    SessionEnd(AsioLoop& loop, std::function<std::string()> why_not, std::function<void()> ended);
    SessionEnd(const SessionEnd&) = delete;
    SessionEnd& operator=(const SessionEnd&) = delete;
    ~SessionEnd();

  private:
    struct Watch;
    std::unique_ptr<Watch> watch_;
};

} // namespace tarnex
