#pragma once

// For .cpp files alone: asio stays out of every other header.

#include "adapters/asio/asio_loop.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>

namespace tarnex {

struct AsioLoop::Core {
    asio::io_context io{1}; // one thread runs it
    asio::executor_work_guard<asio::io_context::executor_type> work{io.get_executor()};
    asio::steady_timer wake_up{io};
    std::optional<Duration> wake_up_due; // nothing: not armed
};

} // namespace tarnex
