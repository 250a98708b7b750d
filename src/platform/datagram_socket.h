#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tarnex {

struct Endpoint {
    std::string address; // numeric, "127.0.0.1"
    std::uint16_t port = 0;
    friend bool operator==(const Endpoint&, const Endpoint&) = default;
};

struct Datagram {
    Endpoint from;
    std::string bytes; // at most 65,535, may be empty
};

// What a socket tells its user. Called from the loop, never from within a call on the socket; the
// user may close or destroy the socket there.
struct DatagramEvents {
    std::function<void(const Datagram&)> received;
    // So many further datagrams came that the system had no room for, where it tells.
    std::function<void(unsigned long)> dropped = nullptr;
};

// A UDP socket. What waits on it is taken at once and handed on one datagram a turn of the loop,
// in the order of arrival. Destroying it closes it.
class DatagramSocket {
  public:
    virtual ~DatagramSocket() = default;

    // Binds to the port on the address of the settings; 0: one that the system chooses. A socket
    // that is bound to that port already stays as it is and loses nothing. "" when bound, else
    // what stands in the way, in words for an operator ("address already in use").
    virtual std::string Bind(std::uint16_t port) = 0;
    virtual bool Bound() const = 0;
    virtual void Close() = 0;
    // One datagram, without waiting. False when the system did not take it; what it took may still
    // be lost anywhere on its way.
    virtual bool Send(const Endpoint& to, std::string_view bytes) = 0;
};

class DatagramSockets {
  public:
    virtual ~DatagramSockets() = default;
    // A new, unbound socket.
    virtual std::unique_ptr<DatagramSocket> Create(DatagramEvents events) = 0;
};

} // namespace tarnex
