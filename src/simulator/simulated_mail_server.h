#pragma once

#include "platform/clock.h"
#include "platform/tcp_client.h"
#include "simulator/mail_sink.h"

#include <map>
#include <utility>

namespace tarnex {

// A network in memory with mail servers on it. What a server answers arrives Delay after what it
// answers to; packets of one answer arrive at the same instant, one event each.
class SimulatedTcpNetwork : public TcpClients {
  public:
    struct Connecting {
        Duration at;
        std::string host;
        std::uint16_t port;
    };
    // One call of TcpClient::Send that reached a connection.
    struct Sending {
        Duration at;
        std::string bytes;
    };

    explicit SimulatedTcpNetwork(Clock& clock) : clock_(clock) {}

    // The sink answers there from now on; it must outlive every connection to it. Where no sink
    // answers, connections are refused.
    void Serve(const std::string& host, std::uint16_t port, MailSink& sink) {
        servers_[{host, port}] = &sink;
    }

    std::unique_ptr<TcpClient> Create(TcpEvents events) override;
    // The server there; nullptr when there is none.
    MailSink* Find(const std::string& host, std::uint16_t port) const;

    Duration Delay = 10ms;
    bool Dead = false; // nothing answers a new connection, not even with a refusal
    std::vector<Connecting> Connections; // every attempt
    std::vector<Sending> Sent;
    int Open = 0; // connections that stand or are being made

  private:
    Clock& clock_;
    std::map<std::pair<std::string, std::uint16_t>, MailSink*> servers_;
};

} // namespace tarnex
