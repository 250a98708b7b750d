#include "adapters/linux/pty_line.h"

#include "adapters/asio/loop_core.h"
#include "adapters/linux/tty_device.h"
#include "adapters/linux/unique_fd.h"
#include "platform/error_words.h"

#include <array>
#include <cerrno>
#include <cstdlib>

#include <asio/posix/stream_descriptor.hpp>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>

namespace tarnex {

namespace {

constexpr Duration kHoldCheckPeriod = 1s;

std::string LastErrorWords() {
    return WordsFor({errno, asio::system_category()});
}

} // namespace

// One pseudo terminal. The programs' end is kept open here as well: the line then keeps its
// settings between two programs, and the own end never sees a hang-up.
class PtyLine::Terminal : public std::enable_shared_from_this<Terminal> {
  public:
    Terminal(AsioLoop& loop, std::shared_ptr<const std::function<void(std::string_view)>> received)
        : own_end_(loop.core().io), received_(std::move(received)) {}

    // "", or what stands in the way.
    std::string Open() {
        UniqueFd own(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
        std::array<char, 128> name{};
        if (!own || grantpt(own.Get()) != 0 || unlockpt(own.Get()) != 0 ||
            ptsname_r(own.Get(), name.data(), name.size()) != 0)
            return LastErrorWords();
        device_name_ = name.data();
        programs_end_ = UniqueFd(open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
        if (!programs_end_ || !MakeRaw(programs_end_.Get()))
            return LastErrorWords();
        asio::error_code error; // the system may watch no more descriptors
        own_end_.assign(own.Get(), error);
        if (error)
            return WordsFor(error);
        own.Release();
        own_end_.non_blocking(true);
        AwaitInput();
        return "";
    }
    void Close() {
        asio::error_code ignored; // nothing is left to be saved
        own_end_.close(ignored);
        programs_end_ = UniqueFd();
    }
    const std::string& DeviceName() const { return device_name_; }
    int Baud() const { return TtyBaud(programs_end_.Get()); }

    void Send(std::string_view bytes) {
        asio::error_code ignored; // the terminal is full: nobody reads it
        own_end_.write_some(asio::buffer(bytes), ignored);
    }

    // A program that is killed leaves its exclusive hold behind on a terminal that stays. A hold
    // without the lock that goes with it is such a left-over.
    void DropLeftOverHold() const {
        const int terminal = programs_end_.Get();
        int held = 0;
        if (ioctl(terminal, TIOCGEXCL, &held) != 0 || held == 0)
            return;
        if (flock(terminal, LOCK_EX | LOCK_NB) != 0)
            return;
        ioctl(terminal, TIOCNXCL);
        flock(terminal, LOCK_UN);
    }

  private:
    static bool MakeRaw(int terminal) {
        termios settings{};
        if (tcgetattr(terminal, &settings) != 0)
            return false;
        cfmakeraw(&settings);
        cfsetspeed(&settings, B19200);
        return tcsetattr(terminal, TCSANOW, &settings) == 0;
    }

    void AwaitInput() {
        own_end_.async_read_some(
            asio::buffer(buffer_),
            [weak = weak_from_this()](const asio::error_code& error, std::size_t size) {
                const auto self = weak.lock();
                if (!self || error)
                    return;
                // First, since waiting for more reads at once what is there, into the same buffer.
                (*self->received_)({self->buffer_.data(), size});
                if (self->own_end_.is_open())
                    self->AwaitInput();
            });
    }

    asio::posix::stream_descriptor own_end_;
    UniqueFd programs_end_;
    std::string device_name_;
    std::shared_ptr<const std::function<void(std::string_view)>> received_;
    std::array<char, 1024> buffer_{};
};

PtyLine::PtyLine(AsioLoop& loop, std::function<void(std::string_view)> received)
    : loop_(loop),
      received_(std::make_shared<const std::function<void(std::string_view)>>(std::move(received))),
      hold_timer_(loop, kHoldCheckPeriod, [this] { terminal_->DropLeftOverHold(); }) {}

PtyLine::~PtyLine() {
    Close();
}

std::string PtyLine::Open() {
    Close();
    auto terminal = std::make_shared<Terminal>(loop_, received_);
    if (std::string trouble = terminal->Open(); !trouble.empty())
        return trouble;
    terminal_ = std::move(terminal);
    hold_timer_.Enable();
    return "";
}

void PtyLine::Close() {
    hold_timer_.Disable();
    if (terminal_)
        terminal_->Close();
    terminal_.reset();
}

std::string PtyLine::DeviceName() const {
    return terminal_ ? terminal_->DeviceName() : "";
}

int PtyLine::Baud() const {
    return terminal_ ? terminal_->Baud() : 0;
}

void PtyLine::Send(std::string_view bytes) {
    if (terminal_)
        terminal_->Send(bytes);
}

} // namespace tarnex
