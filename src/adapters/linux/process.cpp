#include "adapters/system/process.h"

#include <cerrno>
#include <filesystem>
#include <fstream>

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
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    if (!std::getline(file, line))
        return true;
    const std::string begin =
        std::to_string(process) + " (" + program.substr(0, kLongestName) + ") ";
    return line.starts_with(begin) && !line.substr(begin.size()).starts_with('Z');
}

} // namespace tarnex
