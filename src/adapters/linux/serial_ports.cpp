#include "adapters/system/serial_ports.h"

#include "adapters/asio/loop_core.h"
#include "adapters/linux/tty_device.h"

#include <algorithm>
#include <cerrno>

#include <asio/posix/stream_descriptor.hpp>
#include <termios.h>

namespace tarnex {

namespace {

constexpr std::size_t kInBufferSize = 1024; // bytes
// A line that takes nothing for so many bytes is as good as lost.
constexpr std::size_t kOutputLimit = 1 << 20;

using asio::posix::stream_descriptor;

bool MayTryAgain(int error) {
    return error == EAGAIN || error == EINTR;
}

class TtyPort : public SerialPort {
  public:
    TtyPort(AsioLoop& loop, stream_descriptor device, SerialEvents events)
        : loop_(loop), handle_(device.native_handle()), device_(std::move(device)),
          events_(std::make_shared<const SerialEvents>(std::move(events))) {
        AwaitInput();
    }
    ~TtyPort() override { Close(); }

    PortStatus Write(std::string_view bytes) override {
        output_ += bytes;
        SendOutput();
        if (output_.size() > kOutputLimit)
            Lose();
        return IsOpen() ? PortStatus::kOk : PortStatus::kLost;
    }
    std::size_t OutBufferCount() const override {
        return IsOpen() ? output_.size() + TtyOutQueue(handle_) : 0;
    }
    std::size_t InBufferCount() const override { return input_.size(); }
    std::string Read(std::size_t limit) override {
        std::string taken = input_.substr(0, limit);
        input_.erase(0, taken.size());
        AwaitInput();
        return taken;
    }

  private:
    bool IsOpen() const { return handle_ >= 0; }

    // A handler of the descriptor or the loop that does nothing once the port is gone.
    template <class... Arguments>
    auto Guarded(void (TtyPort::*handler)(Arguments...)) {
        return [this, handler, alive = std::weak_ptr<const SerialEvents>(events_)](auto... rest) {
            if (alive.lock())
                (this->*handler)(rest...);
        };
    }

    // A full buffer leaves further bytes to the driver.
    void AwaitInput() {
        if (awaiting_input_ || !IsOpen() || input_.size() >= kInBufferSize)
            return;
        awaiting_input_ = true;
        device_.async_wait(stream_descriptor::wait_read, Guarded(&TtyPort::TakeInput));
    }

    void TakeInput(asio::error_code) {
        awaiting_input_ = false;
        if (!IsOpen())
            return;
        char bytes[kInBufferSize];
        const ssize_t size = read(handle_, bytes, kInBufferSize - input_.size());
        if (size == 0 || (size < 0 && !MayTryAgain(errno))) {
            Lose();
            return;
        }
        input_.append(bytes, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        AwaitInput();
        if (size > 0)
            Tell(&SerialEvents::received);
    }

    void AwaitOutputRoom() {
        if (awaiting_output_room_)
            return;
        awaiting_output_room_ = true;
        device_.async_wait(stream_descriptor::wait_write, Guarded(&TtyPort::ResumeOutput));
    }

    void ResumeOutput(asio::error_code) {
        awaiting_output_room_ = false;
        SendOutput();
    }

    void SendOutput() {
        while (IsOpen() && !output_.empty()) {
            const ssize_t size = write(handle_, output_.data(), output_.size());
            if (size >= 0) {
                output_.erase(0, static_cast<std::size_t>(size));
            } else if (MayTryAgain(errno)) {
                AwaitOutputRoom();
                return;
            } else {
                Lose();
            }
        }
    }

    void Lose() {
        Close();
        loop_.CallAfter(Duration::zero(), Guarded(&TtyPort::TellLoss));
    }
    void TellLoss() { Tell(&SerialEvents::lost); }

    void Close() {
        if (!IsOpen())
            return;
        ReleaseTty(handle_);
        asio::error_code ignored; // closing a lost device may fail
        device_.close(ignored);
        handle_ = -1;
    }

    // Comes last in a handler: the user may destroy the port.
    void Tell(std::function<void()> SerialEvents::*event) {
        const auto events = events_; // lives as long as the call
        ((*events).*event)();
    }

    AsioLoop& loop_;
    int handle_; // of device_; -1 once it is closed
    stream_descriptor device_;
    std::shared_ptr<const SerialEvents> events_;
    std::string input_;
    std::string output_; // what the driver has not taken yet
    bool awaiting_input_ = false;
    bool awaiting_output_room_ = false;
};

} // namespace

OpenedPort SystemSerialPorts::Open(int number, const LineSettings& settings, SerialEvents events) {
    OpenedTty opened = OpenTty(DeviceName(number), settings);
    if (opened.status != PortStatus::kOk)
        return {.port = nullptr, .status = opened.status};
    stream_descriptor device(loop_.core().io);
    asio::error_code error; // the system may watch no more descriptors
    device.assign(opened.descriptor.Get(), error);
    if (error) {
        ReleaseTty(opened.descriptor.Get());
        return {.port = nullptr, .status = PortStatus::kUnusable};
    }
    opened.descriptor.Release();
    return {.port = std::make_unique<TtyPort>(loop_, std::move(device), std::move(events))};
}

std::string SystemSerialPorts::DeviceName(int number) const {
    if (number < 1 || number > static_cast<int>(paths_.size()))
        return "";
    return paths_[static_cast<std::size_t>(number) - 1];
}

} // namespace tarnex
