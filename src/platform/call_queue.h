#pragma once

#include "platform/clock.h"

#include <map>
#include <optional>

namespace tarnex {

// The calls that a clock still owes, earliest first, equal instants in the order of asking.
class CallQueue {
  public:
    CallId Add(Duration due, std::function<void()> fn) {
        const CallId id{due, ++sequence_};
        calls_.emplace(id, std::move(fn));
        return id;
    }
    void Remove(CallId id) { calls_.erase(id); }
    void Clear() { calls_.clear(); }

    // When the next call is due, or nothing when none is owed.
    std::optional<Duration> NextDue() const {
        return calls_.empty() ? std::nullopt : std::optional(calls_.begin()->first.due);
    }
    // Takes the next call out and gives it to the caller to run; there must be one.
    std::function<void()> TakeNext() { return std::move(calls_.extract(calls_.begin()).mapped()); }

  private:
    std::map<CallId, std::function<void()>> calls_;
    std::uint64_t sequence_ = 0;
};

} // namespace tarnex
