#include "adapters/linux/systemd_notify.h"

#include "adapters/linux/unique_fd.h"
#include "adapters/system/environment.h"

#include <algorithm>
#include <charconv>
#include <cstddef>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tarnex {

namespace {

// 0 when text is not a number.
long long Number(std::string_view text) {
    long long number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end ? number : 0;
}

} // namespace

void NotifySystemd(std::string_view state) {
    const std::string name = Environment("NOTIFY_SOCKET");
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

Duration WatchdogPatience() {
    const std::string process = Environment("WATCHDOG_PID"); // the one that is watched
    if (!process.empty() && Number(process) != getpid())
        return Duration::zero();
    const std::chrono::microseconds patience(Number(Environment("WATCHDOG_USEC")));
    return std::max(std::chrono::duration_cast<Duration>(patience), Duration::zero());
}

} // namespace tarnex
