#pragma once

#include "tests/platform_adapters/run_until.h"
#include "tests/temp_folder.h"

#include <csignal>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tarnex {

// A program of this build that runs beside the test, without input. It does not outlive its object.
class ChildProcess {
  public:
    // Both of its outputs go to the file output.
    ChildProcess(const std::string& program, std::vector<std::string> arguments, std::string output)
        : output_(std::move(output)) {
        arguments.insert(arguments.begin(), program);
        std::vector<char*> argv;
        for (std::string& argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        const std::string path = std::string(TARNEX_BIN_DIR) + "/" + program;
        pid_ = fork();
        if (pid_ == 0) {
            dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
            dup2(open(output_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
            dup2(STDOUT_FILENO, STDERR_FILENO);
            execv(path.c_str(), argv.data());
            _exit(127);
        }
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() {
        if (pid_ > 0 && !Ended()) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }

    void Signal(int signal) const { kill(pid_, signal); }
    bool Ended() {
        ended_ = ended_ || waitpid(pid_, &status_, WNOHANG) == pid_;
        return ended_;
    }
    // Runs the loop until the program has ended. Its exit status, or -1.
    int Wait(AsioLoop& loop) {
        return RunUntil(loop, [this] { return Ended(); }) && WIFEXITED(status_)
                   ? WEXITSTATUS(status_)
                   : -1;
    }
    std::string Output() const { return FileContent(output_); }

  private:
    const std::string output_;
    pid_t pid_ = -1;
    bool ended_ = false;
    int status_ = 0;
};

} // namespace tarnex
