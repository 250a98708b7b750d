#include "simulator/simulated_monitor.h"

#include <algorithm>

namespace tarnex {

namespace {

constexpr std::size_t kMessagesKept = 1000;
constexpr TextView kStatesMessage = u"tx-States";

} // namespace

Endpoint ServiceEndpoint(const MonitorOptions& options) {
    return {options.address, std::uint16_t(kFirstServicePort + options.link)};
}

Monitor::Monitor(Clock& clock, DatagramSockets& sockets, const CodePage& code_page,
                 MonitorOptions options)
    : clock_(clock), code_page_(code_page), options_(std::move(options)),
      socket_(sockets.Create({[this](const Datagram& datagram) {
          if (datagram.from == ServiceEndpoint(options_)) // anybody may send here
              Hear(code_page_.Decode(datagram.bytes));
      }})),
      heartbeat_timer_(clock, options_.heartbeat, [this] { SendHeartbeat(); }),
      greet_timer_(clock, options_.greet_again, [this] { Greet(); }) {}

std::string Monitor::Start() {
    if (std::string trouble = socket_->Bind(0); !trouble.empty())
        return trouble;
    heartbeat_timer_.Enable();
    greet_timer_.Enable();
    Greet();
    return "";
}

void Monitor::Stop() {
    heartbeat_timer_.Disable();
    greet_timer_.Disable();
    socket_->Close();
}

void Monitor::Greet() {
    Send(u"txHelloNx" + options_.name);
}

void Monitor::Send(const Text& message) {
    socket_->Send(ServiceEndpoint(options_), code_page_.Encode(message));
}

void Monitor::Hear(const Text& message) {
    greet_timer_.Disable(); // counts anew from here
    greet_timer_.Enable();
    messages_.push_back({clock_.Now(), message});
    if (messages_.size() > kMessagesKept)
        messages_.pop_front();
    if (ForgottenBy(message))
        Greet();
    on_message_(message);
}

// The state message of the service shows this link as one that nobody has greeted.
bool Monitor::ForgottenBy(TextView message) const {
    const std::size_t own = kStatesMessage.size() + 2 + std::size_t(options_.link);
    return StartsWith(message, kStatesMessage) && own < message.size() && message[own] == u'0';
}

bool Monitor::Received(TextView prefix) const {
    return std::ranges::any_of(
        messages_, [&](const MonitorMessage& message) { return StartsWith(message.text, prefix); });
}

} // namespace tarnex
