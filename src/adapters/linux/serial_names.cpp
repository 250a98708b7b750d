#include "adapters/system/serial_names.h"

namespace tarnex {

namespace {

struct Family {
    const char* prefix;
    int count;
};
constexpr Family kFamilies[] = {{"/dev/ttyS", 4}, {"/dev/ttyUSB", 8}, {"/dev/ttyACM", 8}};

} // namespace

SerialPaths SerialDevicePaths(const SerialPaths& configured) {
    SerialPaths paths = configured;
    auto path = paths.begin();
    for (const Family& family : kFamilies)
        for (int i = 0; i < family.count; ++i, ++path)
            if (path->empty())
                *path = family.prefix + std::to_string(i);
    return paths;
}

bool IsDevicePath(std::string_view words) {
    return words.find('/') != words.npos;
}

} // namespace tarnex
