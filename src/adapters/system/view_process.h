#pragma once

#include "platform/result.h"

#include <functional>
#include <memory>
#include <string>

namespace tarnex {

class AsioLoop;

// The process that shows the windows of this one, and the way to it. Packets arrive whole. Nothing
// here waits for it.
class ViewProcess {
  public:
    struct Handlers {
        std::function<void(const std::string& packet)> arrived;
        // It has ended: once, after its last packet. how: the reason in words. The handler may
        // destroy the process.
        std::function<void(const std::string& how)> ended;
    };

    // Trouble when there is no screen or it cannot be started. loop, from which the handlers are
    // called, must outlive the process.
    static Result<std::unique_ptr<ViewProcess>> Start(AsioLoop& loop, Handlers handlers);
    // Kills it.
    virtual ~ViewProcess() = default;

    // False when it does not take the packet.
    virtual bool Send(const std::string& packet) = 0;
    // It ends at once, whatever it waits for, and ended is called.
    virtual void Kill() = 0;
};

} // namespace tarnex
