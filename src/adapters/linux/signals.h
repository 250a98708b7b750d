#pragma once

#include "adapters/asio/asio_loop.h"

#include <functional>
#include <list>

namespace tarnex {

// The signals that other processes send to this one. The loop must outlive them.
class Signals {
  public:
    explicit Signals(AsioLoop& loop);
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;
    ~Signals();

    // From now on the signal no longer has its default effect: handler is called from the loop.
    // Several handlers of one signal are all called. SIGHUP stays ignored where it is when the
    // program starts, by nohup.
    void On(int signal, std::function<void()> handler);

  private:
    class Handler;
    AsioLoop& loop_;
    std::list<Handler> handlers_;
};

} // namespace tarnex
