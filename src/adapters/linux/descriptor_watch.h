#pragma once

#include "adapters/asio/asio_loop.h"

#include <functional>
#include <memory>

namespace tarnex {

// Watches an open descriptor of this process that something arrives at. Ends when it goes, also
// within the handler.
class DescriptorWatch {
  public:
    // readable is called from the loop as long as the descriptor has something to read or is hung
    // up. The descriptor stays the caller's, is non-blocking from now on, and must stay open for
    // as long as the watch lasts, as must the loop.
    DescriptorWatch(AsioLoop& loop, int descriptor, std::function<void()> readable);
    DescriptorWatch(const DescriptorWatch&) = delete;
    DescriptorWatch& operator=(const DescriptorWatch&) = delete;
    ~DescriptorWatch();

  private:
    struct State;
    std::shared_ptr<State> state_;
};

} // namespace tarnex
