#pragma once

#include "platform/text.h"

#include <array>
#include <optional>
#include <utility>

namespace tarnex {

// A queue in a ring of Slots slots, of which at most Slots - 1 are in use: an item too many pushes
// the oldest out.
template <std::size_t Slots, class Item = Text>
class RingFifo {
  public:
    // The oldest item when it was dropped to make room.
    std::optional<Item> Push(Item item) {
        slots_[write_] = std::move(item);
        Advance(write_);
        if (write_ != read_)
            return std::nullopt;
        return Pop();
    }
    bool Empty() const { return read_ == write_; }
    std::size_t Size() const { return (write_ + Slots - read_) % Slots; }
    // The oldest item; the queue must not be empty.
    Item Pop() {
        Item item = std::exchange(slots_[read_], Item());
        Advance(read_);
        return item;
    }
    void Clear() {
        read_ = write_ = 0;
        slots_.fill(Item());
    }

  private:
    static void Advance(std::size_t& index) { index = index + 1 < Slots ? index + 1 : 0; }

    std::array<Item, Slots> slots_{};
    std::size_t read_ = 0;
    std::size_t write_ = 0;
};

} // namespace tarnex
