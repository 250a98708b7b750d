#pragma once

#include "adapters/asio/asio_loop.h"
#include "platform/service_answer.h"

#include <functional>
#include <memory>
#include <string>

namespace tarnex {

// Where the service hears requests: what the environment variable TARNEXCOMM_REQUESTS names, else
// beside the status file.
std::string RequestSocketPath();

// Hears requests of other programs on this machine, one text each, and answers them. Only the user
// and the group of the service may ask.
class RequestSocket {
  public:
    using Answer = std::function<std::string(const std::string& request)>;
    // answer is called from the loop, which must outlive the socket.
    RequestSocket(AsioLoop& loop, Answer answer);
    ~RequestSocket();

    // Hears from now on. "", or what stands in the way; requests are not heard then.
    std::string Listen(const std::string& path);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

// Asks the service; waits 5 s at most.
ServiceAnswer AskService(const std::string& path, const std::string& request);

} // namespace tarnex
