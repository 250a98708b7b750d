#pragma once

#include "adapters/asio/asio_loop.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tarnex {

// One connection to a listener; no two ever have the same.
using ConnectionId = std::uint64_t;

// A TCP server on this machine alone (127.0.0.1), for simulated servers.
class TcpListener {
  public:
    // Called from the loop; never from within a call on the listener, which they must not destroy.
    struct Events {
        std::function<void(ConnectionId)> accepted;
        // What one read brought, 1 to 4096 bytes.
        std::function<void(ConnectionId, std::string_view bytes)> received;
        // The connection is over, whoever ended it.
        std::function<void(ConnectionId)> ended;
    };

    TcpListener(AsioLoop& loop, Events events);
    ~TcpListener();

    // Listens from now on; port 0 is any free one. "", or what stands in the way. Only once.
    std::string Listen(std::uint16_t port);
    // The port that it listens on.
    std::uint16_t Port() const;
    // Queues bytes; dropped when the connection is gone.
    void Send(ConnectionId id, std::string_view bytes);
    // Ends the connection after what is queued has been sent. Nothing more is received on it.
    void Close(ConnectionId id);

  private:
    class Server;
    std::shared_ptr<Server> server_;
};

} // namespace tarnex
