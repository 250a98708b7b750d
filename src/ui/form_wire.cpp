#include "ui/form_wire.h"

#include <cstring>

namespace tarnex {

namespace {

constexpr std::size_t kLongestText = 65'536; // characters; a datagram has fewer

} // namespace

void WireWriter::Number(std::uint64_t number) {
    char bytes[sizeof number];
    std::memcpy(bytes, &number, sizeof number);
    bytes_.append(bytes, sizeof bytes);
}

void WireWriter::String(std::string_view bytes) {
    Number(bytes.size());
    bytes_ += bytes;
}

void WireWriter::Letters(TextView text) {
    text = text.substr(0, kLongestText);
    String({reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)});
}

std::string_view WireReader::Take(std::size_t size) {
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(taken.size());
    return taken;
}

std::uint8_t WireReader::Byte() {
    const std::string_view byte = Take(1);
    return byte.empty() ? 0 : std::uint8_t(byte[0]);
}

std::uint64_t WireReader::Number() {
    const std::string_view bytes = Take(sizeof(std::uint64_t));
    std::uint64_t number = 0;
    if (bytes.size() == sizeof number)
        std::memcpy(&number, bytes.data(), sizeof number);
    return number;
}

std::string WireReader::String() {
    return std::string(Take(Number()));
}

Text WireReader::Letters() {
    const std::string bytes = String();
    Text text(bytes.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
    return text;
}

} // namespace tarnex
