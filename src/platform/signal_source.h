#pragma once

#include <functional>

namespace tarnex {

// The signals that other processes send to this one.
class SignalSource {
  public:
    virtual ~SignalSource() = default;
    // From now on the signal no longer has its default effect: handler is called from the loop.
    // Several handlers of one signal are all called.
    virtual void OnSignal(int signal, std::function<void()> handler) = 0;
};

} // namespace tarnex
