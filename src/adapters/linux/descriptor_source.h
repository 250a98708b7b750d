#pragma once

#include <functional>
#include <memory>

namespace tarnex {

// Open descriptors of this process that something arrives at, such as the connection to a display.
class DescriptorSource {
  public:
    // Ends the watch when it goes; also within the handler.
    class Watch {
      public:
        virtual ~Watch() = default;
    };

    virtual ~DescriptorSource() = default;
    // readable is called from the loop as long as the descriptor has something to read or is hung
    // up. The descriptor stays the caller's, is non-blocking from now on, and must stay open for
    // as long as the watch lasts, as must the source.
    [[nodiscard]] virtual std::unique_ptr<Watch> WatchReadable(int descriptor,
                                                               std::function<void()> readable) = 0;
};

} // namespace tarnex
