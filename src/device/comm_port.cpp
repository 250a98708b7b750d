#include "device/comm_port.h"

#include <limits>
#include <utility>

namespace tarnex {

namespace {

constexpr Duration kOutputPoll = 1ms; // at 38400 baud a byte leaves in 0.3 ms
constexpr Duration kOutputLimit = 2s; // 1024 bytes at 19200 baud leave in 0.6 s

} // namespace

CommPort::CommPort(Clock& clock, SerialPorts& ports, const CodePage& code_page, Events events)
    : clock_(clock), ports_(ports), code_page_(code_page), events_(std::move(events)) {}

PortStatus CommPort::Open(int number, const LineSettings& settings) {
    Close();
    SerialEvents events{.received =
                            [this] {
                                RaiseIfWaiting();
                                events_.arrived();
                            },
                        .lost = events_.lost};
    OpenedPort opened = ports_.Open(number, settings, std::move(events));
    port_ = std::move(opened.port);
    threshold_ = 1;
    return opened.status;
}

void CommPort::Close() {
    port_.reset();
    taken_.clear();
    clock_.Cancel(event_);
}

PortStatus CommPort::Output(TextView text) {
    return OutputBytes(code_page_.Encode(text));
}

PortStatus CommPort::OutputBytes(std::string_view bytes) {
    return port_ ? port_->Write(bytes) : PortStatus::kClosed;
}

Task<bool> CommPort::OutputLeft() {
    const Duration limit = clock_.Now() + kOutputLimit;
    while (OutBufferCount() > 0) {
        if (clock_.Now() >= limit)
            co_return false;
        co_await Sleep(clock_, kOutputPoll);
    }
    co_return true;
}

std::size_t CommPort::OutBufferCount() const {
    return port_ ? port_->OutBufferCount() : 0;
}

std::size_t CommPort::InBufferCount() const {
    return port_ ? code_page_.WholeLength(taken_) + port_->InBufferCount() : 0;
}

Text CommPort::Input() {
    TakeAll();
    const std::size_t whole = code_page_.WholeLength(taken_);
    const Text text = code_page_.Decode(std::string_view(taken_).substr(0, whole));
    taken_.erase(0, whole);
    return text;
}

void CommPort::DropHalfCharacter() {
    TakeAll();
    taken_.resize(code_page_.WholeLength(taken_));
}

void CommPort::TakeAll() {
    if (port_)
        taken_ += port_->Read(std::numeric_limits<std::size_t>::max());
}

std::optional<std::uint8_t> CommPort::InputByte() {
    const std::string byte = port_ ? port_->Read(1) : "";
    return byte.empty() ? std::nullopt : std::optional(std::uint8_t(byte[0]));
}

void CommPort::SetRThreshold(int threshold) {
    threshold_ = threshold;
    RaiseIfWaiting();
}

void CommPort::RaiseIfWaiting() {
    if (threshold_ == 0 || InBufferCount() == 0)
        return;
    clock_.Cancel(event_);
    event_ = clock_.CallAfter(0ms, [this] {
        if (threshold_ != 0)
            events_.receive();
    });
}

} // namespace tarnex
