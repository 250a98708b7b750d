#include "service/echo_line.h"

namespace tarnex {

namespace {

bool IsControl(char16_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

Text Escape(char16_t c) {
    if (c == u'\r')
        return u"\\r";
    if (c == u'\n')
        return u"\\n";
    constexpr TextView kDigits = u"0123456789ABCDEF";
    return Text(u"\\x") + kDigits[c / 16u] + kDigits[c % 16u];
}

} // namespace

std::string EchoLine(const std::string& list, TextView line) {
    Text shown;
    for (const char16_t c : line) {
        if (IsControl(c))
            shown += Escape(c);
        else
            shown += c;
    }
    return list + ": " + ToUtf8(shown) + "\n";
}

} // namespace tarnex
