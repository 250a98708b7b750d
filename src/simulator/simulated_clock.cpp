#include "simulator/simulated_clock.h"

#include "platform/calendar.h"

#include <algorithm>

namespace tarnex {

SimulatedClock::SimulatedClock(CalendarTime start) : calendar_offset_(AsIfUtc(start)) {}

CalendarTime SimulatedClock::Calendar() const {
    return CalendarOf(std::chrono::floor<std::chrono::seconds>(calendar_offset_ + now_));
}

CallId SimulatedClock::CallAfter(Duration delay, std::function<void()> fn) {
    return calls_.Add(now_ + std::max(delay, Duration::zero()), std::move(fn));
}

bool SimulatedClock::RunNext(Duration end) {
    const auto due = calls_.NextDue();
    if (!due || *due > end)
        return false;
    now_ = *due;
    calls_.TakeNext()();
    if (before_sleep_ && calls_.NextDue().value_or(Duration::max()) > now_)
        before_sleep_();
    return true;
}

void SimulatedClock::RunFor(Duration duration) {
    const Duration end = now_ + duration;
    while (RunNext(end)) {
    }
    now_ = end;
}

bool SimulatedClock::RunUntil(const std::function<bool()>& condition, Duration limit) {
    const Duration end = now_ + limit;
    while (!condition()) {
        if (!RunNext(end)) {
            now_ = end;
            return false;
        }
    }
    return true;
}

} // namespace tarnex
