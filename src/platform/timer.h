#pragma once

#include "platform/clock.h"
#include "platform/task.h"

#include <concepts>
#include <functional>
#include <vector>

namespace tarnex {

// A periodic call of one handler. Ticks that were missed are dropped, never queued, and so
// is a tick that falls due while the handler still waits. The next due time is set before the
// handler runs, counted from the last due time, so that slow handlers do not stretch the period.
class Timer {
  public:
    // interval: 0 or less never fires. The handler returns void, or a Task that the timer runs.
    template <std::invocable Handler>
    Timer(Clock& clock, Duration interval, Handler handler)
        : clock_(clock), own_interval_(interval), interval_(interval) {
        if constexpr (std::same_as<std::invoke_result_t<Handler>, Task<>>) {
            run_ = [this, handler = std::move(handler)]() mutable {
                running_ = handler();
                running_.Start();
            };
        } else {
            run_ = std::move(handler);
        }
    }
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    ~Timer() { clock_.Cancel(call_); }

    bool Enabled() const { return enabled_; }
    // The handler waits half-way.
    bool HandlerRunning() const { return running_.Running(); }

    // Starts the count; an enabled timer keeps its phase.
    void Enable();
    void Disable();
    // Starts the count anew when the timer is enabled.
    void SetInterval(Duration interval);
    // Disables the timer, gives it back the interval it was built with, and makes the first tick
    // after the next Enable() come after first_delay.
    void Reset(Duration first_delay);
    // Interval 0 and disabled: nothing but SetInterval and Reset brings it back.
    void Stop();
    // Ends a handler that waits half-way. Not from within that handler.
    void CancelHandler() { running_ = Task<>(); }

  private:
    void Arm(Duration due);
    void Expire();

    Clock& clock_;
    Duration own_interval_;
    Duration interval_;
    Duration first_delay_{}; // 0: the interval holds
    bool enabled_ = false;
    Duration due_{};
    CallId call_;
    std::function<void()> run_;
    Task<> running_;
};

// The timers of one form, so that they can be stopped together. Owns nothing.
class TimerList {
  public:
    void Add(Timer& timer) { timers_.push_back(&timer); }
    const std::vector<Timer*>& All() const { return timers_; }
    void StopAll();
    // Ends every handler that waits half-way. Not from within one of them.
    void CancelHandlers();

  private:
    std::vector<Timer*> timers_;
};

} // namespace tarnex
