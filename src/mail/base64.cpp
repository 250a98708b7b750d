#include "mail/base64.h"

#include <cstdint>

namespace tarnex {

namespace {

constexpr std::string_view kSymbols =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::uint32_t ByteAt(std::string_view bytes, std::size_t at) {
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

} // namespace

std::string Base64Encode(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::uint32_t group =
            ByteAt(bytes, at) << 16 | ByteAt(bytes, at + 1) << 8 | ByteAt(bytes, at + 2);
        for (int shift = 18; shift >= 0; shift -= 6)
            text += kSymbols[group >> shift & 0x3F];
    }
    if (const std::size_t rest = bytes.size() % 3; rest != 0)
        text.replace(text.size() - (3 - rest), 3 - rest, 3 - rest, '=');
    return text;
}

} // namespace tarnex
