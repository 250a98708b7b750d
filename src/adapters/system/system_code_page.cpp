#include "adapters/system/system_code_page.h"

#include <algorithm>

namespace tarnex {

namespace {

std::uint8_t ByteAt(std::string_view bytes, std::size_t at) {
    return static_cast<std::uint8_t>(bytes[at]);
}

bool IsAscii(std::uint16_t unit) {
    return unit < 0x80;
}

// A double-byte character is 0x81-0xFE, then 0x40-0x7E or 0x80-0xFE.
std::size_t FirstLengthGbk(std::string_view bytes) {
    const std::uint8_t lead = ByteAt(bytes, 0);
    if (lead < 0x81 || lead == 0xFF)
        return 1;
    if (bytes.size() < 2)
        return 0;
    const std::uint8_t trail = ByteAt(bytes, 1);
    return trail >= 0x40 && trail != 0x7F && trail != 0xFF ? 2 : 1;
}

std::size_t FirstLengthUtf8(std::string_view bytes) {
    const std::uint8_t lead = ByteAt(bytes, 0);
    const std::size_t length = lead < 0xC2   ? 1
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 1;
    for (std::size_t i = 1; i < length; ++i) {
        if (i == bytes.size())
            return 0;
        if ((ByteAt(bytes, i) & 0xC0) != 0x80)
            return 1;
    }
    return length;
}

std::size_t FirstLengthUtf16(TextView text) {
    const bool pair =
        text.size() > 1 && (text[0] & 0xFC00) == 0xD800 && (text[1] & 0xFC00) == 0xDC00;
    return pair ? 2 : 1;
}

} // namespace

bool SystemCodePage::Supported(std::string_view name) {
    return name == "GBK" || name == "UTF-8";
}

SystemCodePage::SystemCodePage(std::string_view name, std::unique_ptr<Tables> tables)
    : first_length_(name == "GBK" ? FirstLengthGbk : FirstLengthUtf8), tables_(std::move(tables)) {}

std::string SystemCodePage::Encode(TextView text) const {
    std::string bytes;
    bytes.reserve(text.size() * 2);
    while (!text.empty()) {
        const std::size_t taken = FirstLengthUtf16(text);
        char character[8];
        if (IsAscii(text[0]))
            bytes += static_cast<char>(text[0]);
        else if (const auto length = tables_->Encode(text.substr(0, taken), character))
            bytes.append(character, length);
        else
            bytes.append(taken, '?');
        text.remove_prefix(taken);
    }
    return bytes;
}

Text SystemCodePage::Decode(std::string_view bytes) const {
    Text text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        const std::size_t taken = std::max<std::size_t>(first_length_(bytes), 1);
        char16_t character[4];
        if (IsAscii(ByteAt(bytes, 0)))
            text += static_cast<char16_t>(bytes[0]);
        else if (const auto length = tables_->Decode(bytes.substr(0, taken), character))
            text.append(character, length);
        else
            text += u'?';
        bytes.remove_prefix(taken);
    }
    return text;
}

std::size_t SystemCodePage::WholeLength(std::string_view bytes) const {
    std::size_t whole = 0;
    while (whole < bytes.size()) {
        const std::size_t length = first_length_(bytes.substr(whole));
        if (length == 0)
            break;
        whole += length;
    }
    return whole;
}

} // namespace tarnex
