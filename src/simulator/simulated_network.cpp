#include "simulator/simulated_network.h"

#include "simulator/call_group.h"

#include <utility>

namespace tarnex {

namespace {

constexpr std::string_view kAddress = "127.0.0.1";
constexpr std::uint16_t kFirstFreePort = 49152;

} // namespace

class SimulatedNetwork::Socket : public DatagramSocket {
  public:
    Socket(SimulatedNetwork& network, DatagramEvents events)
        : network_(network), events_(std::make_shared<const DatagramEvents>(std::move(events))),
          deliveries_(network.clock_) {}
    ~Socket() override { Close(); }

    std::string Bind(std::uint16_t port) override {
        if (Bound() && port == asked_port_)
            return "";
        Close();
        asked_port_ = port;
        if (port == 0)
            for (port = kFirstFreePort; network_.Taken(port); ++port) {
            }
        if (network_.Taken(port))
            return "address already in use";
        port_ = port;
        network_.bound_[port] = this;
        return "";
    }
    bool Bound() const override { return port_ != 0; }
    void Close() override {
        deliveries_.CancelAll();
        if (Bound())
            network_.bound_.erase(port_);
        port_ = 0;
    }
    bool Send(const Endpoint& to, std::string_view bytes) override {
        if (!Bound() || network_.Refusing)
            return false;
        const auto receiver = network_.bound_.find(to.port);
        if (to.address == kAddress && receiver != network_.bound_.end())
            receiver->second->Arrive(
                {.from = {std::string(kAddress), port_}, .bytes = std::string(bytes)});
        return true;
    }
    void Drop(unsigned long count) {
        deliveries_.After(0ms, [count, events = events_] { events->dropped(count); });
    }

  private:
    void Arrive(Datagram datagram) {
        // The handlers are held by the call, since they may destroy the socket.
        deliveries_.After(0ms, [datagram = std::move(datagram), events = events_] {
            events->received(datagram);
        });
    }

    SimulatedNetwork& network_;
    std::shared_ptr<const DatagramEvents> events_;
    std::uint16_t asked_port_ = 0; // 0: any
    std::uint16_t port_ = 0;       // 0: not bound
    CallGroup deliveries_;
};

std::unique_ptr<DatagramSocket> SimulatedNetwork::Create(DatagramEvents events) {
    return std::make_unique<Socket>(*this, std::move(events));
}

void SimulatedNetwork::Drop(std::uint16_t port, unsigned long count) {
    bound_.at(port)->Drop(count);
}

} // namespace tarnex
