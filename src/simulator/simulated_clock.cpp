#include "simulator/simulated_clock.h"

#include <algorithm>

namespace tarnex {

namespace {

using CalendarInstant = std::chrono::sys_time<Duration>;

CalendarInstant ToInstant(const CalendarTime& time) {
    using namespace std::chrono;
    const auto day = sys_days(year(time.year) / time.month / time.day);
    return day + hours(time.hour) + minutes(time.minute) + seconds(time.second);
}

} // namespace

SimulatedClock::SimulatedClock(CalendarTime start) : calendar_offset_(ToInstant(start)) {}

CalendarTime SimulatedClock::Calendar() const {
    using namespace std::chrono;
    const CalendarInstant instant = calendar_offset_ + now_;
    const auto day = floor<days>(instant);
    const year_month_day date(day);
    const hh_mm_ss time(instant - day);
    return {.year = int(date.year()),
            .month = int(unsigned(date.month())),
            .day = int(unsigned(date.day())),
            .hour = int(time.hours().count()),
            .minute = int(time.minutes().count()),
            .second = int(time.seconds().count()),
            .weekday = int(weekday(day).c_encoding())};
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
