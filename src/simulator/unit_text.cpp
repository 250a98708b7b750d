#include "simulator/unit_text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace tarnex {

namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

} // namespace

std::string ToHexText(TextView text) {
    std::string hex;
    hex.reserve(text.size() * 4);
    for (const char16_t c : text)
        for (int shift = 12; shift >= 0; shift -= 4)
            hex += kDigits[(c >> shift) & 0xF];
    return hex;
}

Text FromHexText(std::string_view hex) {
    Text text;
    for (; !hex.empty(); hex.remove_prefix(std::min<std::size_t>(4, hex.size()))) {
        const std::string_view group = hex.substr(0, 4);
        std::uint16_t code = 0;
        const auto end = std::from_chars(group.data(), group.data() + group.size(), code, 16).ptr;
        const bool whole = group.size() == 4 && end == group.data() + group.size();
        text += whole ? char16_t(code) : u'?';
    }
    return text;
}

std::string MakeReceivedRecord(TextView number, const CalendarTime& when, TextView text) {
    char stamp[64];
    std::snprintf(stamp, sizeof stamp, "%02d/%02d/%02d,%02d:%02d:%02d+32", when.year % 100,
                  when.month, when.day, when.hour, when.minute, when.second);
    return "TX:SMRCV(REC UNREAD,\"" + ToHexText(number) + "\",,\"" + stamp + "\"," +
           ToHexText(text) + ",0,OK)";
}

} // namespace tarnex
