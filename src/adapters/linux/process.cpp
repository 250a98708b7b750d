#include "adapters/system/process.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>

#include <signal.h>
#include <unistd.h>

namespace tarnex {

namespace {

constexpr std::size_t kLongestName = 15; // that the system keeps

} // namespace

long ThisProcess() {
    return getpid();
}

std::string ThisProgram() {
    std::error_code unknown;
    return std::filesystem::read_symlink("/proc/self/exe", unknown).string();
}

bool ProcessRuns(long process, const std::string& program) {
    if (process <= 0 || (kill(static_cast<pid_t>(process), 0) != 0 && errno != EPERM))
        return false;
    // "4711 (tarnexcomm) S ..."; Z: it has ended, and nobody has asked how.
    const std::string path = "/proc/" + std::to_string(process) + "/stat";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "r"),
                                                               std::fclose);
    char start[64]; // the number, the name and the state
    const std::size_t size = file ? std::fread(start, 1, sizeof start, file.get()) : 0;
    if (size == 0)
        return true;
    const std::string line(start, size);
    const std::string begin =
        std::to_string(process) + " (" + program.substr(0, kLongestName) + ") ";
    return line.starts_with(begin) && !line.substr(begin.size()).starts_with('Z');
}

} // namespace tarnex
