#pragma once

#include "adapters/asio/asio_loop.h"

namespace tarnex {

// Runs the loop until condition holds; false when it does not within limit.
inline bool RunUntil(AsioLoop& loop, const std::function<bool()>& condition, Duration limit = 60s) {
    const Duration end = loop.Now() + limit;
    bool met = false;
    std::function<void()> check = [&] {
        met = condition();
        if (met || loop.Now() >= end)
            loop.Stop();
        else
            loop.CallAfter(1ms, check);
    };
    loop.CallAfter(0ms, check);
    loop.Run();
    return met;
}

} // namespace tarnex
