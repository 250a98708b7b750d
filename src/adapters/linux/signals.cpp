#include "adapters/linux/signals.h"

#include "adapters/asio/loop_core.h"
#include "adapters/system/end_requests.h"

#include <csignal>

#include <asio/signal_set.hpp>

namespace tarnex {

class Signals::Handler {
  public:
    Handler(asio::io_context& io, int signal, std::function<void()> handler)
        : signal_(io, signal), handler_(std::move(handler)) {
        Wait();
    }

  private:
    void Wait() {
        signal_.async_wait([this](const asio::error_code& error, int) {
            if (error) // it is gone
                return;
            Wait();
            handler_();
        });
    }

    asio::signal_set signal_;
    std::function<void()> handler_;
};

Signals::Signals(AsioLoop& loop) : loop_(loop) {}

Signals::~Signals() = default;

void Signals::On(int signal, std::function<void()> handler) {
    struct sigaction found {};
    if (signal == SIGHUP && sigaction(signal, nullptr, &found) == 0 && found.sa_handler == SIG_IGN)
        return;
    handlers_.emplace_back(loop_.core().io, signal, std::move(handler));
}

struct EndRequests::State {
    explicit State(AsioLoop& loop) : signals(loop) {}
    Signals signals;
};

EndRequests::EndRequests(AsioLoop& loop) : state_(std::make_unique<State>(loop)) {}

EndRequests::~EndRequests() = default;

void EndRequests::OnEnd(const std::function<void()>& handler) {
    state_->signals.On(SIGTERM, handler);
    state_->signals.On(SIGINT, handler);
}

void EndRequests::OnGone(std::function<void()> handler) {
    state_->signals.On(SIGHUP, std::move(handler));
}

void EndRequests::OnSystemEnd(std::function<void()>) {}

void EndRequests::BeforeSystemEnd(std::function<std::string()>) {}

} // namespace tarnex
