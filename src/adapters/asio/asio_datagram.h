#pragma once

#include "adapters/asio/asio_loop.h"
#include "platform/datagram_socket.h"

namespace tarnex {

// UDP over IPv4. A port belongs to one socket of the machine: a second one is refused.
class AsioDatagramSockets : public DatagramSockets {
  public:
    // bind_address: numeric; what is not an address makes every Bind() fail with words that say so.
    AsioDatagramSockets(AsioLoop& loop, std::string bind_address);

    // For what is bound from now on, by sockets that are there already, too.
    void SetBindAddress(std::string address) { *bind_address_ = std::move(address); }

    // Port 0 binds to one that the system chooses. A socket that is not bound sends nothing.
    std::unique_ptr<DatagramSocket> Create(DatagramEvents events) override;

  private:
    AsioLoop& loop_;
    std::shared_ptr<std::string> bind_address_; // the sockets look there
    std::shared_ptr<char[]> receive_buffer_;    // one for all: a datagram is copied out at once
};

// Sends one datagram without a loop and waits a tenth of a second for its refusal. "", or what
// stands in the way. A datagram that is lost on its way counts as sent.
std::string SendDatagram(const Endpoint& to, std::string_view bytes);

} // namespace tarnex
