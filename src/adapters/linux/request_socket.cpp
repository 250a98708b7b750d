#include "adapters/system/request_socket.h"

#include "adapters/linux/descriptor_watch.h"
#include "adapters/linux/unique_fd.h"
#include "adapters/system/environment.h"
#include "adapters/system/status_file.h"
#include "platform/error_words.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <filesystem>
#include <optional>
#include <tuple>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>

namespace tarnex {

namespace {

constexpr mode_t kSocketMode = 0660;
constexpr int kMostAskers = 8; // at a time; the one that has waited longest goes
constexpr std::size_t kLongest = 65536;
constexpr timeval kPatience{.tv_sec = 5, .tv_usec = 0};
constexpr int kType = SOCK_SEQPACKET | SOCK_CLOEXEC;

std::string Words(int error) {
    if (error == EAGAIN) // the patience is at its end
        return "it does not answer";
    return WordsFor(std::error_code(error, std::generic_category()));
}

// Nothing when the path is too long for a socket.
std::optional<sockaddr_un> AddressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return std::nullopt;
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

const sockaddr* Plain(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

} // namespace

std::string RequestSocketPath() {
    if (const std::string path = Environment("TARNEXCOMM_REQUESTS"); !path.empty())
        return path;
    return std::filesystem::path(StatusFilePath()).parent_path() / "requests.sock";
}

struct RequestSocket::State {
    struct Asker {
        UniqueFd socket;
        std::unique_ptr<DescriptorWatch> watch{};
    };

    void Accept() {
        UniqueFd socket(accept4(listening.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!socket)
            return;
        if (askers.size() == kMostAskers)
            askers.pop_front();
        Asker& asker = *askers.emplace(askers.end(), Asker{.socket = std::move(socket)});
        const int descriptor = asker.socket.Get();
        asker.watch = std::make_unique<DescriptorWatch>(loop, descriptor,
                                                        [this, descriptor] { Serve(descriptor); });
    }

    void Serve(int descriptor) {
        std::string request(kLongest, '\0');
        const ssize_t size = recv(descriptor, request.data(), request.size(), MSG_TRUNC);
        if (size > 0) {
            request.resize(std::min(std::size_t(size), kLongest));
            const std::string reply =
                std::size_t(size) > kLongest ? "the request is too long\n" : answer(request);
            std::ignore = send(descriptor, reply.data(), reply.size(), MSG_NOSIGNAL);
        }
        std::erase_if(
            askers, [descriptor](const Asker& asker) { return asker.socket.Get() == descriptor; });
    }

    AsioLoop& loop;
    Answer answer;
    std::string path{};
    UniqueFd listening{};
    std::unique_ptr<DescriptorWatch> watch{};
    std::deque<Asker> askers{};
};

RequestSocket::RequestSocket(AsioLoop& loop, Answer answer)
    : state_(new State{.loop = loop, .answer = std::move(answer)}) {}

RequestSocket::~RequestSocket() {
    if (!state_->path.empty())
        unlink(state_->path.c_str());
}

std::string RequestSocket::Listen(const std::string& path) {
    const auto address = AddressOf(path);
    if (!address)
        return "its path is too long";
    UniqueFd socket(::socket(AF_UNIX, kType | SOCK_NONBLOCK, 0));
    unlink(path.c_str()); // of a service that was killed: the instance lock is ours
    if (!socket || bind(socket.Get(), Plain(*address), sizeof *address) != 0 ||
        chmod(path.c_str(), kSocketMode) != 0 || listen(socket.Get(), kMostAskers) != 0)
        return Words(errno);
    state_->path = path;
    state_->listening = std::move(socket);
    state_->watch = std::make_unique<DescriptorWatch>(state_->loop, state_->listening.Get(),
                                                      [this] { state_->Accept(); });
    return "";
}

ServiceAnswer AskService(const std::string& path, const std::string& request) {
    const auto trouble = [&](const std::string& why) {
        return ServiceAnswer{.trouble =
                                 "the service cannot be asked at " + path + " (" + why + ")"};
    };
    const auto address = AddressOf(path);
    if (!address)
        return trouble("its path is too long");
    const UniqueFd socket(::socket(AF_UNIX, kType, 0));
    setsockopt(socket.Get(), SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience);
    setsockopt(socket.Get(), SOL_SOCKET, SO_SNDTIMEO, &kPatience, sizeof kPatience);
    if (!socket || connect(socket.Get(), Plain(*address), sizeof *address) != 0) {
        const bool forbidden = errno == EACCES;
        ServiceAnswer none =
            trouble(errno == ENOENT || errno == ECONNREFUSED ? "it does not run"
                    : forbidden ? Words(errno) + ": run this as root or as the user of the service"
                                : Words(errno));
        none.forbidden = forbidden;
        return none;
    }
    std::string answer(kLongest, '\0');
    if (send(socket.Get(), request.data(), request.size(), MSG_NOSIGNAL) < 0)
        return trouble(Words(errno));
    const ssize_t size = recv(socket.Get(), answer.data(), answer.size(), 0);
    if (size <= 0)
        return trouble(size < 0 ? Words(errno) : "it has ended the connection");
    answer.resize(std::size_t(size));
    return {.text = std::move(answer)};
}

} // namespace tarnex
