#include "adapters/system/system_code_page.h"
#include "adapters/windows/windows_headers.h"

#include <algorithm>
#include <iterator>

namespace tarnex {

namespace {

constexpr UINT kGbk = 936;

// In code page 936 Windows has places for them, which mean something else on every machine.
bool IsPrivate(wchar_t unit) {
    return unit >= 0xE000 && unit <= 0xF8FF;
}

std::size_t LengthOf(int result) {
    return static_cast<std::size_t>(std::max(result, 0));
}

class WindowsTables : public SystemCodePage::Tables {
  public:
    explicit WindowsTables(UINT code_page) : code_page_(code_page) {}

    std::size_t Encode(TextView character, char (&bytes)[8]) override {
        const bool gbk = code_page_ == kGbk;
        if (gbk && IsPrivate(character[0]))
            return 0;
        const std::wstring wide(character.begin(), character.end());
        BOOL lost = FALSE; // UTF-8 knows no such thing
        const int length = WideCharToMultiByte(
            code_page_, gbk ? WC_NO_BEST_FIT_CHARS : WC_ERR_INVALID_CHARS, wide.data(),
            static_cast<int>(wide.size()), bytes, sizeof bytes, nullptr, gbk ? &lost : nullptr);
        return lost ? 0 : LengthOf(length);
    }
    std::size_t Decode(std::string_view character, char16_t (&units)[4]) override {
        wchar_t wide[4];
        const std::size_t length = LengthOf(MultiByteToWideChar(
            code_page_, MB_ERR_INVALID_CHARS, character.data(), static_cast<int>(character.size()),
            wide, static_cast<int>(std::size(wide))));
        if (code_page_ == kGbk && length > 0 && IsPrivate(wide[0]))
            return 0;
        std::copy_n(wide, length, units);
        return length;
    }

  private:
    UINT code_page_;
};

} // namespace

SystemCodePage::SystemCodePage(std::string_view name)
    : SystemCodePage(name, std::make_unique<WindowsTables>(name == "GBK" ? kGbk : CP_UTF8)) {}

} // namespace tarnex
