#include "adapters/system/terminal.h"

#include "adapters/system/environment.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <tuple>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace tarnex {

namespace {

constexpr std::size_t kUsualColumns = 80;

class WithoutEcho {
  public:
    WithoutEcho() {
        changed_ = tcgetattr(STDIN_FILENO, &before_) == 0;
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        changed_ = changed_ && tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) == 0;
    }
    WithoutEcho(const WithoutEcho&) = delete;
    WithoutEcho& operator=(const WithoutEcho&) = delete;
    ~WithoutEcho() {
        if (!changed_)
            return;
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
        std::fputc('\n', stderr);
    }

  private:
    termios before_{};
    bool changed_ = false;
};

bool Write(std::FILE* stream, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stream);
    return std::fflush(stream) == 0 || errno != EPIPE;
}

} // namespace

bool PrintOut(std::string_view utf8) {
    return Write(stdout, utf8);
}
bool PrintError(std::string_view utf8) {
    return Write(stderr, utf8);
}

void OccupyStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0)
            std::ignore = open("/dev/null", O_RDONLY); // takes the lowest number that is free
}

void BrokenStreamsFail() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool StandardOutputIsTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}
bool StandardErrorIsTerminal() {
    return isatty(STDERR_FILENO) == 1;
}
bool StandardInputIsTerminal() {
    return isatty(STDIN_FILENO) == 1;
}

std::size_t TerminalColumns() {
    winsize size{};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : kUsualColumns;
}

bool TerminalShowsColours() {
    const std::string terminal = Environment("TERM");
    return !terminal.empty() && terminal != "dumb" && Environment("NO_COLOR").empty();
}

bool WaitForReader(std::chrono::milliseconds length) {
    pollfd output{.fd = STDOUT_FILENO, .events = 0, .revents = 0};
    return poll(&output, 1, int(length.count())) <= 0;
}

std::optional<std::string> AskOnTerminal(const std::string& prompt, bool secret) {
    std::fputs(prompt.c_str(), stderr);
    std::optional<WithoutEcho> silence;
    if (secret)
        silence.emplace();
    std::string line;
    int character = 0;
    while ((character = std::getchar()) != EOF && character != '\n')
        line += static_cast<char>(character);
    return character == EOF && line.empty() ? std::nullopt : std::optional(line);
}

} // namespace tarnex
