#pragma once

#include "adapters/asio/asio_loop.h"

#include <functional>
#include <memory>
#include <string>

namespace tarnex {

// Reads a descriptor of the process, such as its standard input, line by line.
class LineInput {
  public:
    struct Events {
        std::function<void(const std::string& line)> line; // without its line end
        std::function<void()> end;                         // once: nothing more will come
    };
    // Both are called from the loop and must not destroy the input. The descriptor stays the
    // caller's, in the mode it is in.
    LineInput(AsioLoop& loop, int descriptor, Events events);
    ~LineInput();

  private:
    class Reader;
    std::shared_ptr<Reader> reader_;
};

} // namespace tarnex
