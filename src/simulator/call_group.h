#pragma once

#include "platform/clock.h"

#include <map>

namespace tarnex {

// Calls on a clock that end with their owner: what is still owed at its end never runs.
class CallGroup {
  public:
    // clock must outlive the group.
    explicit CallGroup(Clock& clock) : clock_(clock) {}
    CallGroup(const CallGroup&) = delete;
    CallGroup& operator=(const CallGroup&) = delete;
    ~CallGroup() { CancelAll(); }

    Clock& clock() const { return clock_; }

    void After(Duration delay, std::function<void()> fn) {
        const std::uint64_t key = ++last_key_;
        owed_[key] = clock_.CallAfter(delay, [this, key, fn = std::move(fn)] {
            owed_.erase(key);
            fn();
        });
    }
    void CancelAll() {
        for (const auto& [key, call] : owed_)
            clock_.Cancel(call);
        owed_.clear();
    }

  private:
    Clock& clock_;
    std::map<std::uint64_t, CallId> owed_;
    std::uint64_t last_key_ = 0;
};

} // namespace tarnex
