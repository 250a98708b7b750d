#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tarnex {

// Why a connection is over, or never was.
struct TcpEnd {
    std::string why;          // in words for an operator
    bool own_machine = false; // it had no socket or thread to give: no server was asked
};

// Called from the loop; never from within a call on the client, and not after Close() or a new
// Connect() for the connection before.
struct TcpEvents {
    std::function<void()> connected;
    // All that waited on the connection, 1 to 65,536 bytes.
    std::function<void(std::string_view bytes)> received;
    // The name was not found, the connection was refused, broken or closed by the other side, or
    // this machine cannot make one.
    std::function<void(const TcpEnd& end)> ended;
};

// One outgoing TCP connection at a time. Looking up the name, connecting and sending never block.
// Destroying it closes the connection.
class TcpClient {
  public:
    virtual ~TcpClient() = default;

    // Closes the present connection, then begins to look up host and to connect.
    virtual void Connect(const std::string& host, std::uint16_t port) = 0;
    virtual void Close() = 0;
    // Queues bytes; dropped when there is no connection.
    virtual void Send(std::string_view bytes) = 0;
};

class TcpClients {
  public:
    virtual ~TcpClients() = default;
    virtual std::unique_ptr<TcpClient> Create(TcpEvents events) = 0;
};

} // namespace tarnex
