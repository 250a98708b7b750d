#include "adapters/asio/asio_loop.h"

#include "adapters/asio/loop_core.h"
#include "adapters/system/local_time.h"

#include <algorithm>

#include <asio/post.hpp>

namespace tarnex {

namespace {

constexpr Duration kLongestUnlooked = 1s; // while it is busy

} // namespace

AsioLoop::AsioLoop() : core_(std::make_unique<Core>()), start_(std::chrono::steady_clock::now()) {}

AsioLoop::~AsioLoop() = default;

void AsioLoop::Run() {
    stopped_ = false;
    while (!stopped_) {
        RunDueCall();
        if (!stopped_)
            RunArrival();
    }
}

Duration AsioLoop::Now() const {
    if (!now_)
        now_ = std::chrono::floor<Duration>(std::chrono::steady_clock::now() - start_);
    return *now_;
}

CalendarTime AsioLoop::Calendar() const {
    return LocalTime();
}

std::chrono::system_clock::time_point AsioLoop::WallNow() const {
    return std::chrono::system_clock::now();
}

CallId AsioLoop::CallAfter(Duration delay, std::function<void()> fn) {
    return calls_.Add(Now() + std::max(delay, Duration::zero()), std::move(fn));
}

bool AsioLoop::CallIsDue() const {
    const auto due = calls_.NextDue();
    return due && *due <= Now();
}

void AsioLoop::RunDueCall() {
    now_.reset();
    if (CallIsDue())
        calls_.TakeNext()();
}

void AsioLoop::RunArrival() {
    now_.reset();
    if (CallIsDue()) {
        if (Now() >= last_look_ + kLongestUnlooked)
            Look();
        core_->io.poll_one();
        return;
    }
    Look();
    ArmWakeUp();
    now_.reset(); // whatever ends the sleep sees the time after it
    core_->io.run_one();
}

void AsioLoop::Look() {
    last_look_ = Now();
    if (before_sleep_)
        before_sleep_();
    now_.reset(); // it may have taken its time
}

void AsioLoop::ArmWakeUp() {
    const auto due = calls_.NextDue();
    if (due == core_->wake_up_due)
        return;
    core_->wake_up_due = due;
    core_->wake_up.cancel();
    if (!due)
        return;
    core_->wake_up.expires_at(start_ + *due);
    core_->wake_up.async_wait([this](const asio::error_code& error) {
        if (!error)
            core_->wake_up_due.reset();
    });
}

void AsioLoop::Post(std::function<void()> fn) {
    asio::post(core_->io, std::move(fn));
}

} // namespace tarnex
