#include "adapters/linux/systemd_calls.h"

#include "adapters/linux/pidfd.h"
#include "adapters/linux/unique_fd.h"
#include "adapters/system/environment.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>

namespace tarnex {

namespace {

constexpr std::size_t kLongestOutput = 4096; // bytes; a pipe holds more

// -1 when it cannot be started.
pid_t SpawnCommand(const std::vector<std::string>& arguments, int output) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str())); // nobody writes to them
    argv.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = -1;
    const int error = posix_spawnp(&process, argv[0], &files, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    return error == 0 ? process : -1;
}

bool EndsWithin(Duration limit, pid_t process) {
    const UniqueFd handle(pidfd_open(process, 0));
    pollfd end{.fd = handle.Get(), .events = POLLIN, .revents = 0};
    int ready = 0;
    do
        ready = poll(&end, 1, static_cast<int>(limit.count()));
    while (ready < 0 && errno == EINTR);
    return handle && ready == 1;
}

std::string ReadOutput(int pipe) {
    std::string output(kLongestOutput, '\0');
    const ssize_t size = read(pipe, output.data(), output.size());
    output.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return output;
}

// 0 when text is not a number.
long long Number(std::string_view text) {
    long long number = 0;
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end ? number : 0;
}

} // namespace

std::optional<CommandResult> RunCommand(const std::vector<std::string>& arguments, Duration limit) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return std::nullopt;
    const UniqueFd output(ends[0]);
    const UniqueFd input(ends[1]);
    fcntl(output.Get(), F_SETFL, O_NONBLOCK); // a grandchild may keep the pipe open
    const pid_t process = SpawnCommand(arguments, input.Get());
    if (process < 0)
        return std::nullopt;
    const bool ended = EndsWithin(limit, process);
    if (!ended)
        kill(process, SIGKILL);
    int status = 0;
    waitpid(process, &status, 0);
    if (!ended)
        return std::nullopt;
    return CommandResult{.succeeded = WIFEXITED(status) && WEXITSTATUS(status) == 0,
                         .output = ReadOutput(output.Get())};
}

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
