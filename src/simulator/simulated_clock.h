#pragma once

#include "platform/call_queue.h"
#include "platform/clock.h"

namespace tarnex {

// Time that moves only when it is told to, and then from call to call without waiting.
class SimulatedClock : public Clock {
  public:
    // The calendar time at Now() == 0; the weekday is worked out.
    explicit SimulatedClock(CalendarTime start = {.year = 2024, .month = 5, .day = 6, .hour = 8});

    Duration Now() const override { return now_; }
    CalendarTime Calendar() const override;
    // The calendar is that of UTC.
    std::chrono::system_clock::time_point WallNow() const override {
        return calendar_offset_ + now_;
    }
    CallId CallAfter(Duration delay, std::function<void()> fn) override;
    void Cancel(CallId id) override { calls_.Remove(id); }
    void BeforeSleep(std::function<void()> fn) override { before_sleep_ = std::move(fn); }

    // Runs every call that is due within duration, in order, and ends exactly that much later.
    void RunFor(Duration duration);
    // The same up to an instant, counted from the start.
    void RunTo(Duration instant) { RunFor(instant - now_); }
    // Runs call by call until condition holds; true if it did within limit. Ends at the instant at
    // which it came true, or limit later.
    bool RunUntil(const std::function<bool()>& condition, Duration limit);

  private:
    bool RunNext(Duration end);

    CallQueue calls_;
    std::function<void()> before_sleep_;
    Duration now_{};
    std::chrono::sys_time<Duration> calendar_offset_; // calendar time at Now() == 0
};

} // namespace tarnex
