#pragma once

#include "platform/text.h"

#include <cstdint>
#include <optional>

namespace tarnex {

inline constexpr std::uint16_t kSmtpPort = 25;

struct ServerAddress {
    Text host;
    std::uint16_t port = kSmtpPort;
};

// "host" or "host:port"; blanks around either do not count. Nothing when there is no host, or the
// port is not a whole number from 1 to 65535.
std::optional<ServerAddress> ParseServerAddress(TextView text);

} // namespace tarnex
