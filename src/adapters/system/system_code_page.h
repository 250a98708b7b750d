#pragma once

#include "platform/code_page.h"

#include <memory>

namespace tarnex {

// A code page of the system's tables. GBK is Windows code page 936: double-byte characters, and the
// euro sign as byte 0x80; private characters (U+E000 to U+F8FF) are not in it.
class SystemCodePage : public CodePage {
  public:
    // Names are compared exactly: "GBK" and "UTF-8".
    static bool Supported(std::string_view name);

    // name must be supported.
    explicit SystemCodePage(std::string_view name);

    std::string Encode(TextView text) const override;
    Text Decode(std::string_view bytes) const override;
    std::size_t WholeLength(std::string_view bytes) const override;

    // What the system is asked for: characters beyond ASCII, one at a time. The results are the
    // lengths of what stands in the last argument; 0 when the character has no counterpart.
    class Tables {
      public:
        virtual ~Tables() = default;
        virtual std::size_t Encode(TextView character, char (&bytes)[8]) = 0;
        virtual std::size_t Decode(std::string_view character, char16_t (&units)[4]) = 0;
    };

  private:
    // The length of the first character's bytes, 1 for a byte that begins none; 0 when the rest of
    // the character is still missing. bytes is not empty.
    using LengthRule = std::size_t (*)(std::string_view bytes);

    SystemCodePage(std::string_view name, std::unique_ptr<Tables> tables);

    LengthRule first_length_;
    std::unique_ptr<Tables> tables_;
};

} // namespace tarnex
