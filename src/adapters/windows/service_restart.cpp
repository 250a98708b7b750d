#include "adapters/system/service_restart.h"

#include <cstdlib>

namespace tarnex {

// The commands show by themselves what they do and what stands in their way.
std::string RestartService() {
    std::system("net stop TarnexComm");
    return std::system("net start TarnexComm") == 0 ? "" : "see what stands above";
}

} // namespace tarnex
