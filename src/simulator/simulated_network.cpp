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
    Socket(SimulatedNetwork& network, std::function<void(const Datagram&)> on_datagram)
        : network_(network), on_datagram_(std::make_shared<std::function<void(const Datagram&)>>(
                                 std::move(on_datagram))),
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
                {.from = {std::string(kAddress), port_},
                 .bytes = std::string(bytes),
                 .dropped_before = std::exchange(network_.dropped_[to.port], 0)});
        return true;
    }

  private:
    void Arrive(Datagram datagram) {
        // The handler is held by the call, since it may destroy the socket.
        deliveries_.After(0ms, [datagram = std::move(datagram), handler = on_datagram_] {
            (*handler)(datagram);
        });
    }

    SimulatedNetwork& network_;
    std::shared_ptr<std::function<void(const Datagram&)>> on_datagram_;
    std::uint16_t asked_port_ = 0; // 0: any
    std::uint16_t port_ = 0;       // 0: not bound
    CallGroup deliveries_;
};

std::unique_ptr<DatagramSocket>
SimulatedNetwork::Create(std::function<void(const Datagram&)> on_datagram) {
    return std::make_unique<Socket>(*this, std::move(on_datagram));
}

} // namespace tarnex
