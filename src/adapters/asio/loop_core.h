#pragma once

// For this folder's .cpp files alone: asio stays out of every other header.

#include "adapters/asio/asio_loop.h"

#include <list>

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>
#include <asio/steady_timer.hpp>

namespace tarnex {

class SignalHandler {
  public:
    SignalHandler(asio::io_context& io, int signal, std::function<void()> handler)
        : signal_(io, signal), handler_(std::move(handler)) {
        Wait();
    }

  private:
    void Wait() {
        signal_.async_wait([this](const asio::error_code&, int) {
            Wait();
            handler_();
        });
    }

    asio::signal_set signal_;
    std::function<void()> handler_;
};

struct AsioLoop::Core {
    asio::io_context io{1}; // one thread runs it
    asio::executor_work_guard<asio::io_context::executor_type> work{io.get_executor()};
    asio::steady_timer wake_up{io};
    std::optional<Duration> wake_up_due; // nothing: not armed
    std::list<SignalHandler> signals;
};

} // namespace tarnex
