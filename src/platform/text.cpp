#include "platform/text.h"

#include <cmath>
#include <limits>

namespace tarnex {

namespace {

constexpr char16_t kReplacement = 0xFFFD;

char16_t Lower(char16_t c) {
    return c >= u'A' && c <= u'Z' ? char16_t(c - u'A' + u'a') : c;
}

Text Escape(char16_t c) {
    if (c == u'\r')
        return u"\\r";
    if (c == u'\n')
        return u"\\n";
    Text digits;
    for (unsigned shift = c < 0x100 ? 8 : 16; shift > 0; shift -= 4)
        digits += u"0123456789ABCDEF"[c >> (shift - 4) & 0xF];
    return (c < 0x100 ? u"\\x" : u"\\u") + digits;
}

bool IsHighSurrogate(char16_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}
bool IsLowSurrogate(char16_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

// Returns the end of what it writes, at most 4 bytes.
char* PutUtf8(char* out, char32_t c) {
    if (c < 0x80) {
        *out++ = char(c);
    } else if (c < 0x800) {
        *out++ = char(0xC0 | (c >> 6));
        *out++ = char(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        *out++ = char(0xE0 | (c >> 12));
        *out++ = char(0x80 | ((c >> 6) & 0x3F));
        *out++ = char(0x80 | (c & 0x3F));
    } else {
        *out++ = char(0xF0 | (c >> 18));
        *out++ = char(0x80 | ((c >> 12) & 0x3F));
        *out++ = char(0x80 | ((c >> 6) & 0x3F));
        *out++ = char(0x80 | (c & 0x3F));
    }
    return out;
}

struct Decoded {
    char32_t code;
    std::size_t length; // bytes used, at least 1
};

Decoded DecodeOne(std::string_view bytes) {
    const auto lead = static_cast<unsigned char>(bytes[0]);
    if (lead < 0x80)
        return {lead, 1};
    std::size_t length = 0;
    char32_t code = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        code = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        code = lead & 0x0F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        code = lead & 0x07;
    } else {
        return {kReplacement, 1};
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (i >= bytes.size() || (static_cast<unsigned char>(bytes[i]) & 0xC0) != 0x80)
            return {kReplacement, i};
        code = (code << 6) | (static_cast<unsigned char>(bytes[i]) & 0x3F);
    }
    const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    if (overlong || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return {kReplacement, length};
    return {code, length};
}

} // namespace

TextView Trim(TextView text) {
    const auto first = text.find_first_not_of(u' ');
    if (first == TextView::npos)
        return {};
    return text.substr(first, text.find_last_not_of(u' ') - first + 1);
}

bool EqualIgnoringCase(TextView a, TextView b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (Lower(a[i]) != Lower(b[i]))
            return false;
    return true;
}

bool IsControl(char16_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x061C || c == 0x200E || c == 0x200F ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

Text EscapeControls(TextView text) {
    Text shown;
    for (const char16_t c : text) {
        if (IsControl(c))
            shown += Escape(c);
        else
            shown += c;
    }
    return shown;
}

std::string EscapeControls(std::string_view utf8) {
    return ToUtf8(EscapeControls(FromUtf8(utf8)));
}

Text ToText(long long number) {
    const std::string digits = std::to_string(number);
    return Text(digits.begin(), digits.end());
}

Text ToText(long long number, int digits) {
    Text text = ToText(number);
    if (text.size() < std::size_t(digits))
        text.insert(0, std::size_t(digits) - text.size(), u'0');
    return text;
}

double LeadingNumber(TextView text) {
    std::size_t i = text.find_first_not_of(u" \t\r\n");
    if (i == TextView::npos)
        return 0;
    const bool negative = text[i] == u'-';
    if (text[i] == u'-' || text[i] == u'+')
        ++i;
    double value = 0;
    for (; i < text.size() && IsDigit(text[i]); ++i)
        value = value * 10 + (text[i] - u'0');
    if (i < text.size() && text[i] == u'.') {
        double scale = 0.1;
        for (++i; i < text.size() && IsDigit(text[i]); ++i, scale /= 10)
            value += (text[i] - u'0') * scale;
    }
    return negative ? -value : value;
}

std::optional<std::int16_t> LeadingInt16(TextView text) {
    const double rounded = std::nearbyint(LeadingNumber(text));
    if (rounded < std::numeric_limits<std::int16_t>::min() ||
        rounded > std::numeric_limits<std::int16_t>::max())
        return std::nullopt;
    return static_cast<std::int16_t>(rounded);
}

std::string ToUtf8(TextView text) {
    std::string out(3 * text.size(), '\0'); // two characters that make four bytes are less
    char* end = out.data();
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t code = text[i];
        if (IsHighSurrogate(text[i]) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            code = 0x10000 + ((code - 0xD800) << 10) + (text[i + 1] - 0xDC00);
            ++i;
        } else if (IsHighSurrogate(text[i]) || IsLowSurrogate(text[i])) {
            code = kReplacement;
        }
        end = PutUtf8(end, code);
    }
    out.resize(std::size_t(end - out.data()));
    return out;
}

Text FromUtf8(std::string_view utf8) {
    Text out;
    out.reserve(utf8.size());
    while (!utf8.empty()) {
        const Decoded decoded = DecodeOne(utf8);
        utf8.remove_prefix(decoded.length);
        if (decoded.code < 0x10000) {
            out += static_cast<char16_t>(decoded.code);
        } else {
            const char32_t rest = decoded.code - 0x10000;
            out += static_cast<char16_t>(0xD800 + (rest >> 10));
            out += static_cast<char16_t>(0xDC00 + (rest & 0x3FF));
        }
    }
    return out;
}

} // namespace tarnex
