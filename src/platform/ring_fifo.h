#pragma once

#include "platform/text.h"

#include <array>
#include <utility>

namespace tarnex {

// A queue of texts in a ring of Slots slots, of which at most Slots - 1 are in use: a text too
// many pushes the oldest out.
template <std::size_t Slots>
class RingFifo {
  public:
    // False when the oldest text was dropped to make room.
    bool Push(const Text& text) {
        slots_[write_] = text;
        Advance(write_);
        if (write_ != read_)
            return true;
        slots_[read_].clear();
        Advance(read_);
        return false;
    }
    bool Empty() const { return read_ == write_; }
    std::size_t Size() const { return (write_ + Slots - read_) % Slots; }
    // The oldest text; the queue must not be empty.
    Text Pop() {
        Text text = std::exchange(slots_[read_], Text());
        Advance(read_);
        return text;
    }
    void Clear() {
        read_ = write_ = 0;
        slots_.fill(Text());
    }

  private:
    static void Advance(std::size_t& index) { index = index + 1 < Slots ? index + 1 : 0; }

    std::array<Text, Slots> slots_;
    std::size_t read_ = 0;
    std::size_t write_ = 0;
};

} // namespace tarnex
