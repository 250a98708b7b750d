#pragma once

// For this folder's .cpp files alone: asio stays out of every other header.

#include "adapters/asio/asio_loop.h"

#include <string>
#include <vector>

#include <asio/ip/tcp.hpp>

namespace tarnex {

struct HostAddresses {
    std::vector<asio::ip::tcp::endpoint> endpoints; // empty: not found
    std::string why_not;                            // in words for an operator
    bool own_machine = false; // nobody was asked: this machine had no thread to give
};

// One look-up of a host name, which runs in a thread of its own: the system's resolver blocks, for
// half a minute when no name server answers. That thread is never waited for, neither by a
// cancelled look-up nor by the end of the process (asio's own resolver would wait).
class NameLookup {
  public:
    // done is called from the loop, never from within the constructor, and not after destruction.
    NameLookup(AsioLoop& loop, const std::string& host, std::uint16_t port,
               std::function<void(const HostAddresses&)> done);
    NameLookup(const NameLookup&) = delete;
    NameLookup& operator=(const NameLookup&) = delete;
    ~NameLookup();

  private:
    struct Request;
    std::shared_ptr<Request> request_;
};

} // namespace tarnex
