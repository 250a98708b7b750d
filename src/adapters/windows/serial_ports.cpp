#include "adapters/system/serial_ports.h"

#include "adapters/asio/loop_core.h"
#include "adapters/windows/windows_handle.h"
#include "adapters/windows/windows_text.h"

#include <array>

#include <asio/buffer.hpp>
#include <asio/serial_port.hpp>

namespace tarnex {

namespace {

constexpr std::size_t kInBufferSize = 1024; // bytes
// A line that takes nothing for so many bytes is as good as lost.
constexpr std::size_t kOutputLimit = 1 << 20;

// "COM10" and above are found under their full name alone; what is a path stays as it is.
std::wstring FullName(const std::string& path) {
    return ToWide(path.find_first_of("\\/:") == std::string::npos ? "\\\\.\\" + path : path);
}

bool SetUp(HANDLE device, const LineSettings& settings) {
    DCB line{};
    line.DCBlength = sizeof line;
    if (!GetCommState(device, &line))
        return false;
    line.BaudRate = static_cast<DWORD>(settings.baud);
    line.ByteSize = static_cast<BYTE>(settings.data_bits);
    line.Parity = NOPARITY;
    line.StopBits = settings.stop_bits == 2 ? TWOSTOPBITS : ONESTOPBIT;
    line.fBinary = TRUE;
    line.fParity = FALSE;
    line.fOutxCtsFlow = line.fOutxDsrFlow = line.fDsrSensitivity = FALSE;
    line.fOutX = line.fInX = line.fErrorChar = line.fNull = line.fAbortOnError = FALSE;
    line.fDtrControl = DTR_CONTROL_ENABLE;
    line.fRtsControl = RTS_CONTROL_ENABLE;
    COMMTIMEOUTS timeouts{}; // a read ends with what there is as soon as there is something
    timeouts.ReadIntervalTimeout = 1;
    if (!SetCommState(device, &line) || !SetCommTimeouts(device, &timeouts))
        return false;
    // By itself: Wine's lines that carry no parity take it as a change only.
    line.Parity = settings.parity == 'E' ? EVENPARITY : ODDPARITY;
    if (settings.parity != 'N' && !SetCommState(device, &line))
        return false;
    PurgeComm(device, PURGE_RXABORT | PURGE_RXCLEAR | PURGE_TXABORT | PURGE_TXCLEAR);
    return true;
}

// Everything that asio's handlers use lives as long as the last of them.
class Line : public std::enable_shared_from_this<Line> {
  public:
    Line(AsioLoop& loop, SerialEvents events)
        : device_(loop.core().io), loop_(loop), events_(std::move(events)) {}

    bool Take(HANDLE device) {
        asio::error_code error;
        device_.assign(device, error);
        return !error;
    }
    void AwaitInput() {
        if (reading_ || !device_.is_open() || input_.size() >= kInBufferSize)
            return;
        reading_ = true;
        device_.async_read_some(
            asio::buffer(block_.data(), kInBufferSize - input_.size()),
            [self = shared_from_this()](asio::error_code error, std::size_t size) {
                self->reading_ = false;
                self->TakeInput(error, size);
            });
    }
    PortStatus Write(std::string_view bytes) {
        output_ += bytes;
        SendOutput();
        if (OutBufferCount() > kOutputLimit)
            Lose();
        return device_.is_open() ? PortStatus::kOk : PortStatus::kLost;
    }
    std::size_t OutBufferCount() const {
        return device_.is_open() ? output_.size() + sending_.size() : 0;
    }
    std::size_t InBufferCount() const { return input_.size(); }
    std::string Read(std::size_t limit) {
        std::string taken = input_.substr(0, limit);
        input_.erase(0, taken.size());
        AwaitInput();
        return taken;
    }
    // The user is gone.
    void Abandon() {
        abandoned_ = true;
        Close();
    }

  private:
    void TakeInput(asio::error_code error, std::size_t size) {
        if (!device_.is_open())
            return;
        if (error) {
            Lose();
            return;
        }
        input_.append(block_.data(), size);
        AwaitInput();
        if (size > 0)
            events_.received(); // comes last: the user may destroy the port
    }
    void SendOutput() {
        if (!sending_.empty() || output_.empty() || !device_.is_open())
            return;
        sending_.swap(output_);
        device_.async_write_some(
            asio::buffer(sending_),
            [self = shared_from_this()](asio::error_code error, std::size_t size) {
                self->output_.insert(0, self->sending_, size);
                self->sending_.clear();
                if (error && self->device_.is_open())
                    self->Lose();
                self->SendOutput();
            });
    }
    void Lose() {
        if (!device_.is_open())
            return;
        Close();
        loop_.CallAfter(Duration::zero(), [self = shared_from_this()] {
            if (!self->abandoned_)
                self->events_.lost();
        });
    }
    void Close() {
        asio::error_code ignored; // closing a lost device may fail
        if (device_.is_open())
            PurgeComm(device_.native_handle(), PURGE_TXABORT | PURGE_TXCLEAR);
        device_.close(ignored);
    }

    asio::serial_port device_;
    AsioLoop& loop_;
    SerialEvents events_;
    std::array<char, kInBufferSize> block_{};
    std::string input_;
    std::string output_;  // waits until sending_ has left
    std::string sending_; // the system has it
    bool reading_ = false;
    bool abandoned_ = false;
};

class ComPort : public SerialPort {
  public:
    explicit ComPort(std::shared_ptr<Line> line) : line_(std::move(line)) { line_->AwaitInput(); }
    ~ComPort() override { line_->Abandon(); }

    PortStatus Write(std::string_view bytes) override { return line_->Write(bytes); }
    std::size_t OutBufferCount() const override { return line_->OutBufferCount(); }
    std::size_t InBufferCount() const override { return line_->InBufferCount(); }
    std::string Read(std::size_t limit) override { return line_->Read(limit); }

  private:
    std::shared_ptr<Line> line_;
};

} // namespace

OpenedPort SystemSerialPorts::Open(int number, const LineSettings& settings, SerialEvents events) {
    const std::string path = DeviceName(number);
    if (path.empty())
        return {.port = nullptr, .status = PortStatus::kAbsent};
    const HANDLE device = CreateFileW(FullName(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
    WindowsHandle owned(device);
    if (!owned) {
        const DWORD error = GetLastError();
        const bool busy = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION;
        return {.port = nullptr, .status = busy ? PortStatus::kBusy : PortStatus::kAbsent};
    }
    auto line = std::make_shared<Line>(loop_, std::move(events));
    if (!SetUp(device, settings) || !line->Take(device))
        return {.port = nullptr, .status = PortStatus::kUnusable};
    owned.Release(); // the line closes it
    return {.port = std::make_unique<ComPort>(std::move(line))};
}

std::string SystemSerialPorts::DeviceName(int number) const {
    if (number < 1 || number > static_cast<int>(paths_.size()))
        return "";
    return paths_[static_cast<std::size_t>(number) - 1];
}

} // namespace tarnex
