#include "adapters/system/system_code_page.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include <iconv.h>

namespace tarnex {

namespace {

constexpr const char* kTextCode =
    std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

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

// Opened by its first use, so that a program that meets only ASCII never loads the tables.
class SystemCodePage::Converter {
  public:
    Converter(std::string to, std::string from) : to_(std::move(to)), from_(std::move(from)) {}
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() {
        if (Usable())
            iconv_close(handle_);
    }

    // Converts one character. Gives the length of what stands in output; 0 when it has none.
    std::size_t Convert(const void* input, std::size_t length, char (&output)[8]) {
        if (!handle_)
            handle_ = iconv_open(to_.c_str(), from_.c_str());
        if (!Usable())
            return 0;
        iconv(handle_, nullptr, nullptr, nullptr, nullptr);
        char* in = const_cast<char*>(static_cast<const char*>(input)); // iconv only reads it
        char* out = output;
        std::size_t room = sizeof output;
        const bool converted = iconv(handle_, &in, &length, &out, &room) == 0;
        return converted ? sizeof output - room : 0;
    }

  private:
    // iconv_open() reports failure as the pointer -1.
    bool Usable() const { return handle_ && reinterpret_cast<std::intptr_t>(handle_) != -1; }

    std::string to_;
    std::string from_;
    iconv_t handle_ = nullptr;
};

bool SystemCodePage::Supported(std::string_view name) {
    return name == "GBK" || name == "UTF-8";
}

SystemCodePage::SystemCodePage(std::string_view name)
    : first_length_(name == "GBK" ? FirstLengthGbk : FirstLengthUtf8),
      encoder_(std::make_unique<Converter>(std::string(name), kTextCode)),
      decoder_(std::make_unique<Converter>(kTextCode, std::string(name))) {}

SystemCodePage::SystemCodePage(SystemCodePage&&) noexcept = default;
SystemCodePage& SystemCodePage::operator=(SystemCodePage&&) noexcept = default;
SystemCodePage::~SystemCodePage() = default;

std::string SystemCodePage::Encode(TextView text) const {
    std::string bytes;
    bytes.reserve(text.size() * 2);
    while (!text.empty()) {
        const std::size_t taken = FirstLengthUtf16(text);
        char character[8];
        if (IsAscii(text[0]))
            bytes += static_cast<char>(text[0]);
        else if (const auto length =
                     encoder_->Convert(text.data(), taken * sizeof(char16_t), character))
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
        char character[8];
        if (IsAscii(ByteAt(bytes, 0))) {
            text += static_cast<char16_t>(bytes[0]);
        } else if (const auto length = decoder_->Convert(bytes.data(), taken, character)) {
            char16_t units[4];
            std::memcpy(units, character, length);
            text.append(units, length / sizeof(char16_t));
        } else {
            text += u'?';
        }
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
