#include "adapters/system/arguments.h"

namespace tarnex {

std::vector<std::string> ProgramArguments(int argc, char** argv) {
    if (argc < 1) // a program may be started without even its name
        return {};
    return {argv + 1, argv + argc};
}

} // namespace tarnex
