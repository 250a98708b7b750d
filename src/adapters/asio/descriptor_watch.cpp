#include "adapters/asio/asio_loop.h"
#include "adapters/asio/loop_core.h"

#include <asio/posix/stream_descriptor.hpp>
#include <fcntl.h>

namespace tarnex {

namespace {

class DescriptorWatch : public DescriptorSource::Watch {
  public:
    DescriptorWatch(asio::io_context& io, int descriptor, std::function<void()> readable)
        : state_(std::make_shared<State>(io, std::move(readable))) {
        asio::error_code error;
        // A descriptor of asio's own, since it closes what it is given.
        state_->descriptor.assign(fcntl(descriptor, F_DUPFD_CLOEXEC, 0), error);
        if (!error)
            Await(state_);
    }

  private:
    struct State {
        State(asio::io_context& io, std::function<void()> on_readable)
            : descriptor(io), readable(std::move(on_readable)) {}
        asio::posix::stream_descriptor descriptor;
        std::function<void()> readable;
    };

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

    std::shared_ptr<State> state_;
};

} // namespace

std::unique_ptr<DescriptorSource::Watch> AsioLoop::WatchReadable(int descriptor,
                                                                 std::function<void()> readable) {
    return std::make_unique<DescriptorWatch>(core_->io, descriptor, std::move(readable));
}

} // namespace tarnex
