#include "adapters/asio/asio_version.h"

#include <asio/version.hpp>

namespace tarnex {

std::string AsioVersion() {
    return std::to_string(ASIO_VERSION / 100000) + "." + std::to_string(ASIO_VERSION / 100 % 1000) +
           "." + std::to_string(ASIO_VERSION % 100);
}

} // namespace tarnex
