#pragma once

#include "platform/code_page.h"

#include <memory>

namespace tarnex {

// A code page as the system converts it. GBK is Windows code page 936: double-byte characters, and
// the euro sign as byte 0x80.
class SystemCodePage : public CodePage {
  public:
    // Names are compared exactly: "GBK" and "UTF-8".
    static bool Supported(std::string_view name);

    // name must be supported.
    explicit SystemCodePage(std::string_view name);
    SystemCodePage(SystemCodePage&&) noexcept;
    SystemCodePage& operator=(SystemCodePage&&) noexcept;
    ~SystemCodePage() override;

    std::string Encode(TextView text) const override;
    Text Decode(std::string_view bytes) const override;
    std::size_t WholeLength(std::string_view bytes) const override;

  private:
    class Converter;
    // The length of the first character's bytes, 1 for a byte that begins none; 0 when the rest of
    // the character is still missing. bytes is not empty.
    using LengthRule = std::size_t (*)(std::string_view bytes);

    LengthRule first_length_;
    std::unique_ptr<Converter> encoder_;
    std::unique_ptr<Converter> decoder_;
};

} // namespace tarnex
