#include "adapters/system/environment.h"

#include <cstdlib>

namespace tarnex {

std::string Environment(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

} // namespace tarnex
