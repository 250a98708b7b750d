#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarnex {

// Text inside the program: 16-bit characters, as the unit counts them. A length or a cut never
// looks at surrogate pairs. Bytes become Text, and Text bytes, through CodePage only.
using Text = std::u16string;
using TextView = std::u16string_view;

// Without the blanks (U+0020 only) at both ends.
TextView Trim(TextView text);

inline bool StartsWith(TextView text, TextView prefix) {
    return text.starts_with(prefix);
}
inline bool Contains(TextView text, TextView part) {
    return text.find(part) != TextView::npos;
}

inline bool IsDigit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

// ASCII letters compare without case; every other character exactly.
bool EqualIgnoringCase(TextView a, TextView b);

// What drives a terminal or changes how a line reads, unseen itself: C0, DEL and C1 controls,
// line and paragraph separators, and the characters that turn the direction of writing.
bool IsControl(char16_t c);
// Those characters as the escapes "\r", "\n", "\x1B" and "\u202E", so that one line stays one line
// and a terminal or a window shows what somebody else wrote as it is.
Text EscapeControls(TextView text);
// The same for UTF-8; a byte that is not UTF-8 becomes U+FFFD.
std::string EscapeControls(std::string_view utf8);

// Decimal digits, "-" in front of a negative number.
Text ToText(long long number);
// The same, padded with zeros in front to at least `digits` digits; number is 0 or more.
Text ToText(long long number, int digits);

// The number that a text begins with: "7a" is 7, " 12.5x" is 12.5, "" and "abc" are 0.
double LeadingNumber(TextView text);
// The leading number rounded to a whole one (halves to the even one), or nothing where it does
// not fit 16 bits.
std::optional<std::int16_t> LeadingInt16(TextView text);

// UTF-8 for SQLite, the windows and standard error. A lone surrogate or a byte that is not UTF-8
// becomes U+FFFD.
std::string ToUtf8(TextView text);
Text FromUtf8(std::string_view utf8);

} // namespace tarnex
