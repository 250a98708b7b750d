#include "adapters/linux/line_input.h"

#include "adapters/asio/loop_core.h"

#include <array>

#include <asio/posix/stream_descriptor.hpp>
#include <fcntl.h>
#include <sys/stat.h>

namespace tarnex {

namespace {

// Reading without blocking changes the mode of whatever was opened, which a terminal or a pipe
// shares with other descriptors and programs: such a one is opened anew, to have a mode of its own.
int OwnDescriptor(int descriptor) {
    struct stat file {};
    const bool known = fstat(descriptor, &file) == 0;
    if (known && (S_ISFIFO(file.st_mode) || isatty(descriptor))) {
        const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
        if (const int own = open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC); own >= 0)
            return own;
    }
    return fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
}

} // namespace

class LineInput::Reader : public std::enable_shared_from_this<Reader> {
  public:
    Reader(AsioLoop& loop, Events events) : loop_(loop), events_(std::move(events)) {}

    void Start(int descriptor) {
        asio::error_code error;
        input_.assign(OwnDescriptor(descriptor), error);
        if (error)
            loop_.CallAfter(0ms, [weak = weak_from_this()] {
                if (const auto self = weak.lock())
                    self->events_.end();
            });
        else
            Await();
    }

  private:
    void Await() {
        input_.async_read_some(
            asio::buffer(buffer_),
            [weak = weak_from_this()](const asio::error_code& error, std::size_t size) {
                if (const auto self = weak.lock())
                    self->Take(error, size);
            });
    }

    void Take(const asio::error_code& error, std::size_t size) {
        received_.append(buffer_.data(), size);
        if (error && !received_.empty())
            received_ += '\n'; // the last line may lack its end
        for (std::size_t end; (end = received_.find('\n')) != std::string::npos;) {
            const std::string line = received_.substr(0, end);
            received_.erase(0, end + 1);
            events_.line(line);
        }
        if (error)
            events_.end();
        else
            Await();
    }

    AsioLoop& loop_;
    Events events_;
    asio::posix::stream_descriptor input_{loop_.core().io};
    std::array<char, 4096> buffer_{};
    std::string received_;
};

LineInput::LineInput(AsioLoop& loop, int descriptor, Events events)
    : reader_(std::make_shared<Reader>(loop, std::move(events))) {
    reader_->Start(descriptor);
}

LineInput::~LineInput() = default;

} // namespace tarnex
