#pragma once

#include "logging/debug_lists.h"

namespace tarnex {

// The device link's own trace, which staff can switch by itself.
class DeviceTrace {
  public:
    explicit DeviceTrace(DebugLists& lists) : lists_(lists) {}

    bool DebugOn = false;

    // Adds the joined parts as one line to the debug list; they are joined only when it is shown.
    template <class... Parts>
    void DebugAdd(const Parts&... parts) {
        if (!DebugOn)
            return;
        Text line;
        (line.append(parts), ...);
        lists_.List1Additem(line);
    }

  private:
    DebugLists& lists_;
};

} // namespace tarnex
