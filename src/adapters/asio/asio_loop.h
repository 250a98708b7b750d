#pragma once

#include "platform/call_queue.h"
#include "platform/clock.h"

#include <memory>
#include <optional>

namespace tarnex {

// The real event loop: time, the queue of calls, and the sockets, lines and requests of the other
// adapters, which it must outlive. It sleeps until something is due or arrives.
class AsioLoop : public Clock {
  public:
    // What the other adapters build on; defined in loop_core.h.
    struct Core;

    AsioLoop();
    ~AsioLoop() override;

    // Runs handlers until Stop(): a due call and an arrival take turns, so that neither can keep
    // the other waiting. May be run again.
    void Run();
    // From a handler: Run() returns when that handler does. What is still owed stays owed.
    void Stop() { stopped_ = true; }

    Duration Now() const override;
    CalendarTime Calendar() const override;
    std::chrono::system_clock::time_point WallNow() const override;
    CallId CallAfter(Duration delay, std::function<void()> fn) override;
    void Cancel(CallId id) override { calls_.Remove(id); }
    void BeforeSleep(std::function<void()> fn) override { before_sleep_ = std::move(fn); }

    // From any thread, as long as the loop lives: fn runs once in the thread of Run(), after what
    // was posted before it.
    void Post(std::function<void()> fn);

    Core& core() { return *core_; }

  private:
    bool CallIsDue() const;
    void RunDueCall();
    void RunArrival();
    void Look();
    void ArmWakeUp();

    std::unique_ptr<Core> core_;
    CallQueue calls_;
    std::function<void()> before_sleep_;
    Duration last_look_{}; // when that ran
    std::chrono::steady_clock::time_point start_;
    mutable std::optional<Duration> now_; // as the present handler has seen it, if it asked
    bool stopped_ = false;
};

} // namespace tarnex
