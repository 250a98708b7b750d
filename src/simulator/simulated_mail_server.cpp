#include "simulator/simulated_mail_server.h"

#include "simulator/call_group.h"

#include <optional>

namespace tarnex {

namespace {

constexpr std::size_t kLongestRead = 65'536; // bytes of one received event

class SimulatedTcpClient : public TcpClient {
  public:
    SimulatedTcpClient(SimulatedTcpNetwork& network, Clock& clock, TcpEvents events)
        : network_(network), calls_(clock), events_(std::move(events)) {}
    ~SimulatedTcpClient() override { Close(); }

    void Connect(const std::string& host, std::uint16_t port) override;
    void Close() override;
    void Send(std::string_view bytes) override;

  private:
    void Establish(MailSink& sink);
    void Deliver(const SinkAnswer& answer);
    void End(const std::string& why);

    SimulatedTcpNetwork& network_;
    CallGroup calls_; // what is still under way on the present connection
    TcpEvents events_;
    bool open_ = false;                       // connected, or trying to be
    std::optional<MailSink::Session> server_; // while connected and not closed by the server
};

void SimulatedTcpClient::Connect(const std::string& host, std::uint16_t port) {
    Close();
    open_ = true;
    ++network_.Open;
    network_.Connections.push_back({calls_.clock().Now(), host, port});
    if (network_.Dead)
        return;
    if (MailSink* sink = network_.Find(host, port))
        calls_.After(network_.Delay, [this, sink] { Establish(*sink); });
    else
        calls_.After(network_.Delay, [this] { End("connection refused"); });
}

void SimulatedTcpClient::Close() {
    calls_.CancelAll();
    server_.reset();
    network_.Open -= open_;
    open_ = false;
}

void SimulatedTcpClient::Establish(MailSink& sink) {
    server_.emplace(sink);
    Deliver(server_->Connected());
    events_.connected();
}

void SimulatedTcpClient::Send(std::string_view bytes) {
    if (!server_)
        return;
    network_.Sent.push_back({calls_.clock().Now(), std::string(bytes)});
    Deliver(server_->Receive(bytes));
}

void SimulatedTcpClient::Deliver(const SinkAnswer& answer) {
    for (const std::string& packet : answer.packets)
        for (std::size_t at = 0; at < packet.size(); at += kLongestRead)
            calls_.After(network_.Delay, [this, bytes = packet.substr(at, kLongestRead)] {
                events_.received(bytes);
            });
    if (answer.endless)
        calls_.After(network_.Delay, [this, answer] { Deliver(answer); });
    if (answer.close) {
        server_.reset();
        calls_.After(network_.Delay, [this] { End("closed by the other side"); });
    }
}

void SimulatedTcpClient::End(const std::string& why) {
    Close();
    events_.ended({.why = why});
}

} // namespace

std::unique_ptr<TcpClient> SimulatedTcpNetwork::Create(TcpEvents events) {
    return std::make_unique<SimulatedTcpClient>(*this, clock_, std::move(events));
}

MailSink* SimulatedTcpNetwork::Find(const std::string& host, std::uint16_t port) const {
    const auto server = servers_.find({host, port});
    return server == servers_.end() ? nullptr : server->second;
}

} // namespace tarnex
