#pragma once

#include "adapters/asio/asio_loop.h"
#include "platform/tcp_client.h"

namespace tarnex {

// TCP over IPv4 and IPv6. What is sent by one call leaves in a write of its own, without delay.
class AsioTcpClients : public TcpClients {
  public:
    explicit AsioTcpClients(AsioLoop& loop) : loop_(loop) {}
    std::unique_ptr<TcpClient> Create(TcpEvents events) override;

  private:
    AsioLoop& loop_;
};

} // namespace tarnex
