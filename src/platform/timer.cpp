#include "platform/timer.h"

namespace tarnex {

void Timer::Enable() {
    if (enabled_)
        return;
    enabled_ = true;
    const Duration delay = first_delay_ > 0ms ? first_delay_ : interval_;
    if (interval_ > 0ms)
        Arm(clock_.Now() + delay);
}

void Timer::Disable() {
    enabled_ = false;
    clock_.Cancel(call_);
}

void Timer::SetInterval(Duration interval) {
    interval_ = interval;
    first_delay_ = 0ms;
    if (enabled_) {
        Disable();
        Enable();
    }
}

void Timer::Reset(Duration first_delay) {
    Disable();
    interval_ = own_interval_;
    first_delay_ = first_delay;
}

void Timer::Stop() {
    SetInterval(0ms);
    Disable();
}

void Timer::Arm(Duration due) {
    due_ = due;
    call_ = clock_.CallAfter(due - clock_.Now(), [this] { Expire(); });
}

void Timer::Expire() {
    first_delay_ = 0ms;
    Duration next = due_ + interval_;
    if (const Duration late = clock_.Now() - next; late >= 0ms)
        next += interval_ * (late / interval_ + 1);
    Arm(next);
    if (!HandlerRunning())
        run_();
}

void TimerList::StopAll() {
    for (Timer* timer : timers_)
        timer->Stop();
}

void TimerList::CancelHandlers() {
    for (Timer* timer : timers_)
        timer->CancelHandler();
}

} // namespace tarnex
