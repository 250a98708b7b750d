#include "programs/send_datagram.h"

#include "adapters/linux/unique_fd.h"

#include <cerrno>
#include <cstring>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>

namespace tarnex {

namespace {

constexpr int kRefusalWait = 100; // ms

std::string LastError() {
    return std::strerror(errno);
}

} // namespace

std::string SendDatagram(const Endpoint& to, std::string_view bytes) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(to.port);
    if (inet_pton(AF_INET, to.address.c_str(), &address.sin_addr) != 1)
        return "\"" + to.address + "\" is not an IPv4 address";

    // Only a connected socket is told of a refusal.
    const UniqueFd socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!socket ||
        connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return LastError();
    if (send(socket.Get(), bytes.data(), bytes.size(), 0) < 0)
        return LastError();

    pollfd refusal{.fd = socket.Get(), .events = 0, .revents = 0};
    if (poll(&refusal, 1, kRefusalWait) <= 0)
        return "";
    int error = 0;
    socklen_t size = sizeof error;
    getsockopt(socket.Get(), SOL_SOCKET, SO_ERROR, &error, &size);
    if (error == ECONNREFUSED)
        return "nobody listens there";
    return error == 0 ? "" : std::strerror(error);
}

} // namespace tarnex
