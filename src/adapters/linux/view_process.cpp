#include "adapters/system/view_process.h"

#include "adapters/linux/descriptor_watch.h"
#include "adapters/linux/pidfd.h"
#include "adapters/linux/unique_fd.h"
#include "adapters/system/environment.h"
#include "ui/form_wire.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>

#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>

namespace tarnex {

namespace {

constexpr char kProgram[] = "tarnex-view";
constexpr int kSocketOfView = 3; // as the program expects it

std::string FindProgram() {
    std::error_code error;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    const auto beside = folder / kProgram;
    return std::filesystem::exists(beside, error)
               ? beside
               : folder.parent_path() / TARNEX_VIEW_FOLDER / kProgram;
}

// 0, or what failed.
int SpawnView(const std::string& path, int socket, pid_t& pid) {
    std::string version = TARNEX_VERSION;
    std::string name = kProgram;
    char* const argv[] = {name.data(), version.data(), nullptr};
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files, STDERR_FILENO, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, socket, kSocketOfView);
    // Neither the line to the unit nor a link may stay open in it.
    posix_spawn_file_actions_addclosefrom_np(&files, kSocketOfView + 1);
    const int error = posix_spawn(&pid, path.c_str(), &files, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&files);
    return error;
}

std::string HowItEnded(int status) {
    const std::string program = "the program of the windows has ended ";
    return WIFSIGNALED(status) ? program + "by signal " + std::to_string(WTERMSIG(status))
                               : program + "with status " + std::to_string(WEXITSTATUS(status));
}

// The program tarnex-view, and the socket to it.
class TarnexView final : public ViewProcess {
  public:
    TarnexView(AsioLoop& loop, Handlers handlers, UniqueFd socket, UniqueFd end, int pid);
    ~TarnexView() override;

    bool Send(const std::string& packet) override;
    void Kill() override;

  private:
    // False when no packet has come.
    bool Receive();
    void SocketReadable();
    void Ended();

    Handlers handlers_;
    int pid_; // -1 once its end has been seen
    UniqueFd socket_;
    UniqueFd end_; // readable when the process has ended
    std::optional<DescriptorWatch> socket_watch_;
    std::optional<DescriptorWatch> end_watch_;
};

TarnexView::TarnexView(AsioLoop& loop, Handlers handlers, UniqueFd socket, UniqueFd end, int pid)
    : handlers_(std::move(handlers)), pid_(pid), socket_(std::move(socket)), end_(std::move(end)),
      socket_watch_(std::in_place, loop, socket_.Get(), [this] { SocketReadable(); }),
      end_watch_(std::in_place, loop, end_.Get(), [this] { Ended(); }) {}

TarnexView::~TarnexView() {
    if (pid_ < 0)
        return;
    Kill();
    waitpid(pid_, nullptr, WNOHANG); // who ends himself leaves the rest to the system
}

void TarnexView::Kill() {
    if (pid_ >= 0)
        kill(pid_, SIGKILL);
}

bool TarnexView::Send(const std::string& packet) {
    return send(socket_.Get(), packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL) ==
           ssize_t(packet.size());
}

bool TarnexView::Receive() {
    const ssize_t size = recv(socket_.Get(), nullptr, 0, MSG_PEEK | MSG_TRUNC | MSG_DONTWAIT);
    if (size <= 0)
        return false;
    std::string packet(std::size_t(size), '\0');
    recv(socket_.Get(), packet.data(), packet.size(), MSG_DONTWAIT);
    handlers_.arrived(packet);
    return true;
}

void TarnexView::SocketReadable() {
    if (!Receive() && errno != EAGAIN)
        socket_watch_.reset(); // closed: its end is seen soon
}

void TarnexView::Ended() {
    while (Receive()) {
    }
    int status = 0;
    if (pid_ < 0 || waitpid(pid_, &status, WNOHANG) == 0)
        return;
    pid_ = -1;
    socket_watch_.reset();
    end_watch_.reset();
    const auto ended = std::move(handlers_.ended);
    ended(HowItEnded(status));
}

} // namespace

Result<std::unique_ptr<ViewProcess>> ViewProcess::Start(AsioLoop& loop, Handlers handlers) {
    if (Environment("DISPLAY").empty())
        return Trouble{"there is no display (the environment variable DISPLAY is not set)"};
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        return Trouble{std::string("no socket: ") + std::strerror(errno)};
    UniqueFd ours(ends[0]);
    const UniqueFd its(ends[1]);
    // The system takes at least that size of everybody; it doubles it, and needs the room.
    const int room = kLongestPacket / 2;
    for (const int end : ends)
        setsockopt(end, SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
    const std::string path = FindProgram();
    pid_t pid = -1;
    if (const int error = SpawnView(path, its.Get(), pid); error != 0)
        return Trouble{"the program " + path + " cannot be started: " + std::strerror(error) +
                       " (it comes with the package tarnexcomm-view)"};
    UniqueFd end(pidfd_open(pid, 0));
    if (!end) { // out of descriptors: its end would not be seen
        const std::string why = std::strerror(errno);
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        return Trouble{"no descriptor for the windows: " + why};
    }
    return std::unique_ptr<ViewProcess>(std::make_unique<TarnexView>(
        loop, std::move(handlers), std::move(ours), std::move(end), pid));
}

} // namespace tarnex
