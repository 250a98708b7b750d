#include "platform/linux/process_check.h"

#include <cerrno>
#include <fstream>

#include <signal.h>

namespace tarnex {

namespace {

constexpr std::size_t kLongestName = 15; // that the system keeps

} // namespace

bool ProcessRuns(long process, const std::string& program) {
    if (process <= 0 || (kill(static_cast<pid_t>(process), 0) != 0 && errno != EPERM))
        return false;
    std::ifstream file("/proc/" + std::to_string(process) + "/comm");
    std::string name;
    return !std::getline(file, name) || name == program.substr(0, kLongestName);
}

} // namespace tarnex
