#include "mail/server_address.h"

namespace tarnex {

namespace {

std::optional<std::uint16_t> ParsePort(TextView digits) {
    if (digits.empty())
        return std::nullopt;
    std::uint32_t port = 0;
    for (const char16_t digit : digits) {
        if (digit < u'0' || digit > u'9')
            return std::nullopt;
        port = port * 10 + (digit - u'0');
        if (port > 65535)
            return std::nullopt;
    }
    return port == 0 ? std::nullopt : std::optional(static_cast<std::uint16_t>(port));
}

} // namespace

std::optional<ServerAddress> ParseServerAddress(TextView text) {
    const std::size_t colon = text.find(u':');
    const TextView host = Trim(text.substr(0, colon));
    if (host.empty())
        return std::nullopt;
    if (colon == TextView::npos)
        return ServerAddress{Text(host)};
    const auto port = ParsePort(Trim(text.substr(colon + 1)));
    if (!port)
        return std::nullopt;
    return ServerAddress{Text(host), *port};
}

} // namespace tarnex
