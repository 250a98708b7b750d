#include "adapters/system/request_socket.h"

namespace tarnex {

// Nobody can ask the service here yet: a named pipe would be the way.
struct RequestSocket::State {};

std::string RequestSocketPath() {
    return "";
}

RequestSocket::RequestSocket(AsioLoop&, Answer) {}
RequestSocket::~RequestSocket() = default;

std::string RequestSocket::Listen(const std::string&) {
    return "";
}

Result<std::string> AskService(const std::string&, const std::string&) {
    return Trouble{"the service cannot be asked on Windows; with send-again on it sends what was "
                   "lost again by itself"};
}

} // namespace tarnex
