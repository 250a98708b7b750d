#include "device/answer_rules.h"

namespace tarnex {

namespace {

// -1 for a character that is no hexadecimal digit.
int HexDigit(char16_t c) {
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'A' && c <= u'F')
        return c - u'A' + 10;
    if (c >= u'a' && c <= u'f')
        return c - u'a' + 10;
    return -1;
}

} // namespace

Text CheckOK(TextView answer) {
    return Text(StartsWith(answer, kOk) ? kOk : kFailed);
}

Text CutAnswer(TextView answer, TextView prefix) {
    if (answer.size() <= prefix.size() || !StartsWith(answer, prefix))
        return Text(kFailed);
    return Text(answer.substr(prefix.size(), answer.size() - prefix.size() - 1));
}

Text HexEncode(TextView text) {
    Text hex;
    hex.reserve(text.size() * 4);
    for (const char16_t character : text) {
        Text digits;
        for (unsigned code = character; code != 0 || digits.empty(); code /= 16)
            digits.insert(digits.begin(), u"0123456789ABCDEF"[code % 16]);
        if (digits.size() == 2)
            hex += u"00";
        hex += digits;
    }
    return hex;
}

Text HexDecode(TextView hex) {
    Text text;
    text.reserve(hex.size() / 4 + 1);
    for (std::size_t at = 0; at < hex.size(); at += 4) {
        int code = 0;
        for (const char16_t c : hex.substr(at, 4)) {
            const int digit = HexDigit(c);
            code = code < 0 || digit < 0 ? -1 : code * 16 + digit;
        }
        if (code >= 0)
            text += static_cast<char16_t>(code);
    }
    return text;
}

} // namespace tarnex
