#include "adapters/linux/descriptor_watch.h"

#include "adapters/asio/loop_core.h"

#include <asio/posix/stream_descriptor.hpp>
#include <fcntl.h>

namespace tarnex {

struct DescriptorWatch::State {
    State(asio::io_context& io, std::function<void()> on_readable)
        : descriptor(io), readable(std::move(on_readable)) {}

    static void Await(const std::shared_ptr<State>& state) {
        state->descriptor.async_wait(asio::posix::stream_descriptor::wait_read,
                                     [weak = std::weak_ptr(state)](const asio::error_code& error) {
                                         const auto held =
                                             weak.lock(); // the handler may end the watch
                                         if (!held || error)
                                             return;
                                         held->readable();
                                         if (held.use_count() > 1)
                                             Await(held);
                                     });
    }

    asio::posix::stream_descriptor descriptor;
    std::function<void()> readable;
};

DescriptorWatch::DescriptorWatch(AsioLoop& loop, int descriptor, std::function<void()> readable)
    : state_(std::make_shared<State>(loop.core().io, std::move(readable))) {
    asio::error_code error;
    // A descriptor of asio's own, since it closes what it is given.
    state_->descriptor.assign(fcntl(descriptor, F_DUPFD_CLOEXEC, 0), error);
    if (!error)
        State::Await(state_);
}

DescriptorWatch::~DescriptorWatch() = default;

} // namespace tarnex
