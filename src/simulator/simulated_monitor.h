#pragma once

#include "platform/code_page.h"
#include "platform/datagram_socket.h"
#include "platform/timer.h"
#include "simulator/monitor_messages.h"

#include <deque>

namespace tarnex {

// The links of the service: link i is UDP port kFirstServicePort + i.
inline constexpr std::uint16_t kFirstServicePort = 7840;
inline constexpr int kServiceLinks = 5;

struct MonitorOptions {
    int link = 0; // below kServiceLinks
    Text name = u"Monitor";
    std::string address = "127.0.0.1"; // of the service
    Duration heartbeat = 10s;          // 0: none
    // The service is greeted anew after hearing nothing from it for so long, over and over. 0: not.
    Duration greet_again = 35s;
};

// Where the service listens for this monitor.
Endpoint ServiceEndpoint(const MonitorOptions& options);

struct MonitorMessage {
    Duration at; // the clock's time
    Text text;
};

// A monitoring program on one control link: greets, sends heartbeats, and greets again when the
// service seems to have forgotten it.
class Monitor {
  public:
    // All three must outlive the monitor.
    Monitor(Clock& clock, DatagramSockets& sockets, const CodePage& code_page,
            MonitorOptions options);

    // Begins on a port that the system chooses, with a greeting. "", or what stands in the way, in
    // words for an operator.
    std::string Start();
    // Vanishes without a word. Start() brings it back on another port.
    void Stop();

    void Greet();
    void SendHeartbeat() { Send(u"txHeartSv"); }
    void SendEvent(const MonitorEvent& event) { Send(MakeEventMessage(event)); }
    // Any message at all. Nothing is sent while stopped.
    void Send(const Text& message);

    // Called for every message that comes from the service.
    void OnMessage(std::function<void(const Text&)> fn) { on_message_ = std::move(fn); }
    // The last 1000 messages since ForgetMessages(), oldest first.
    const std::deque<MonitorMessage>& Messages() const { return messages_; }
    void ForgetMessages() { messages_.clear(); }
    // One of those begins with prefix.
    bool Received(TextView prefix) const;

  private:
    void Hear(const Text& message);
    bool ForgottenBy(TextView message) const;

    Clock& clock_;
    const CodePage& code_page_;
    const MonitorOptions options_;
    std::unique_ptr<DatagramSocket> socket_;
    Timer heartbeat_timer_;
    Timer greet_timer_;
    std::deque<MonitorMessage> messages_;
    std::function<void(const Text&)> on_message_ = [](const Text&) {};
};

} // namespace tarnex
