#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace tarnex {

using Duration = std::chrono::milliseconds;
using namespace std::chrono_literals;

// Local calendar time of the machine.
struct CalendarTime {
    int year = 0;
    int month = 1; // 1 to 12
    int day = 1;   // 1 to 31
    int hour = 0;
    int minute = 0;
    int second = 0;
    int weekday = 0; // 0 Sunday to 6 Saturday
};

// A call that was asked for; a default one names none.
struct CallId {
    Duration due{};
    std::uint64_t sequence = 0;
    friend auto operator<=>(const CallId&, const CallId&) = default;
};

// The event loop's time and queue. Every handler of the program runs from here, one at a time.
class Clock {
  public:
    virtual ~Clock() = default;

    // Time since start. Never goes back; stands still while one handler runs.
    virtual Duration Now() const = 0;
    // Local calendar time. May jump either way; never measure a wait with it.
    virtual CalendarTime Calendar() const = 0;
    // The same moment for programs elsewhere, without time zones.
    virtual std::chrono::system_clock::time_point WallNow() const = 0;
    // Runs fn once, delay from now (negative counts as 0), never before this function returns.
    // Calls due at one instant run in the order in which they were made.
    virtual CallId CallAfter(Duration delay, std::function<void()> fn) = 0;
    // The call does not run any more. Harmless after it has run.
    virtual void Cancel(CallId id) = 0;
    // fn runs just before the loop sleeps, and every second while handlers leave it no time to. It
    // costs no wake-up. One such function at a time; an empty one ends it.
    virtual void BeforeSleep(std::function<void()> fn) = 0;
};

} // namespace tarnex
