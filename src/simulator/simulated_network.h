#pragma once

#include "platform/clock.h"
#include "platform/datagram_socket.h"

#include <map>
#include <set>

namespace tarnex {

// UDP on a machine of its own, 127.0.0.1: nothing is lost, and nothing takes time. A datagram to a
// port that nobody has bound, or to any other address, is dropped.
class SimulatedNetwork : public DatagramSockets {
  public:
    // clock must outlive the network, and the network its sockets.
    explicit SimulatedNetwork(Clock& clock) : clock_(clock) {}

    std::unique_ptr<DatagramSocket> Create(DatagramEvents events) override;

    // Another program holds the port, or gives it back. It must not be bound here.
    void OccupyPort(std::uint16_t port) { occupied_.insert(port); }
    void FreePort(std::uint16_t port) { occupied_.erase(port); }
    // So many datagrams to the port, which must be bound here, find no room.
    void Drop(std::uint16_t port, unsigned long count);

    bool Refusing = false; // the system takes nothing that is to be sent

  private:
    class Socket;

    bool Taken(std::uint16_t port) const {
        return occupied_.contains(port) || bound_.contains(port);
    }

    Clock& clock_;
    std::map<std::uint16_t, Socket*> bound_;
    std::set<std::uint16_t> occupied_;
};

} // namespace tarnex
