#include "platform/linux/systemd_notify.h"

#include "platform/linux/unique_fd.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include <sys/socket.h>
#include <sys/un.h>

namespace tarnex {

void NotifySystemd(std::string_view state) {
    const char* const variable = std::getenv("NOTIFY_SOCKET");
    const std::string_view name = variable ? variable : "";
    sockaddr_un address{};
    if (name.empty() || name.size() >= sizeof address.sun_path)
        return;
    address.sun_family = AF_UNIX;
    std::copy(name.begin(), name.end(), address.sun_path);
    if (name[0] == '@') // an abstract socket: no file, the name begins with a zero byte
        address.sun_path[0] = '\0';
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());

    const UniqueFd socket_fd(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sendto(socket_fd.Get(), state.data(), state.size(), MSG_NOSIGNAL,
           reinterpret_cast<const sockaddr*>(&address), length);
}

} // namespace tarnex
