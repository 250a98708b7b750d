#include "adapters/system/serial_names.h"

namespace tarnex {

SerialPaths SerialDevicePaths(const SerialPaths& configured) {
    SerialPaths paths = configured;
    for (std::size_t i = 0; i < paths.size(); ++i)
        if (paths[i].empty())
            paths[i] = "COM" + std::to_string(i + 1);
    return paths;
}

bool IsDevicePath(std::string_view words) {
    return words.find_first_of("\\/") != words.npos;
}

} // namespace tarnex
