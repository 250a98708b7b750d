#include "simulator/unit_protocol.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace tarnex {

namespace {

using enum ProtocolAction;
using enum ProtocolArgument;
using M = UnitMemory;

// clang-format off
constexpr ProtocolCommand kCommands[] = {
    // name          argument  action         field                text
    {"RDCSQ",        kNone,    kReportSignal, nullptr,             ""},
    {"Hello,tarnex", kNone,    kGreet,        nullptr,             ""},
    {"LCD1",         kPlain,   kStore,        &M::Lcd1,            ""},
    {"LCD2",         kPlain,   kStore,        &M::Lcd2,            ""},
    {"LCDFree",      kNone,    kFreeDisplay,  nullptr,             ""},
    {"RDALARM",      kNone,    kTell,         &M::AlarmState,      "ALARM("},
    {"PCAlarm",      kPlain,   kStore,        &M::PcAlarm,         ""},
    {"PCAlarmOff",   kNone,    kSet,          &M::PcAlarm,         ""},
    {"ChkVer",       kNone,    kTell,         &M::Version,         ""},
    {"RDNO1",        kNone,    kTell,         &M::Number1,         "NO1("},
    {"RDNO2",        kNone,    kTell,         &M::Number2,         "NO2("},
    {"WRNO1",        kPlain,   kStore,        &M::Number1,         ""},
    {"WRNO2",        kPlain,   kStore,        &M::Number2,         ""},
    {"WRDT",         kPlain,   kStore,        &M::AlarmTime,       ""},
    {"RDDT",         kNone,    kTell,         &M::AlarmTime,       "DT("},
    {"WRAT",         kPlain,   kStore,        &M::SendTimes,       ""},
    {"RDAT",         kNone,    kTell,         &M::SendTimes,       "AT("},
    {"TXPWRON",      kNone,    kSet,          &M::PowerAlarm,      "1"},
    {"TXPWROFF",     kNone,    kSet,          &M::PowerAlarm,      "0"},
    {"TXCONON",      kNone,    kSet,          &M::ConnectionAlarm, "1"},
    {"TXCONOFF",     kNone,    kSet,          &M::ConnectionAlarm, "0"},
    {"WRCSCA",       kHexText, kStore,        &M::SmsCentre,       ""},
    {"RDCSCA",       kNone,    kTell,         &M::SmsCentre,       "TXCSCA("},
    {"RESET",        kNone,    kReset,        nullptr,             ""},
    {"WRName",       kHexText, kStore,        &M::Name,            ""},
    {"RDName",       kNone,    kTell,         &M::Name,            "Name("},
    {"EnName",       kNone,    kSet,          &M::NameMode,        "1"},
    {"DisName",      kNone,    kSet,          &M::NameMode,        "0"},
    {"RDNAMESt",     kNone,    kTell,         &M::NameMode,        "NameSt("},
    {"RDSerial",     kNone,    kTell,         &M::Serial,          "Serial("},
    {"QorvexWsr",    kPlain,   kStore,        &M::Serial,          ""},
    {"SENDSMS1",     kHexText, kSendSms,      &M::Number1,         ""},
    {"SENDSMS2",     kHexText, kSendSms,      &M::Number2,         ""},
};
// clang-format on

const ProtocolCommand* FindCommand(std::string_view name, bool with_argument) {
    for (const ProtocolCommand& command : kCommands)
        if (command.name == name && (command.argument != kNone) == with_argument)
            return &command;
    return nullptr;
}

constexpr char kHexDigits[] = "0123456789ABCDEF";

} // namespace

std::span<const ProtocolCommand> ProtocolCommands() {
    return kCommands;
}

ProtocolLine ParseProtocolLine(std::string_view line) {
    const std::size_t open = line.find('(');
    if (open == line.npos || !line.ends_with(')'))
        return {FindCommand(line, false), line, ""};
    const std::string_view name = line.substr(0, open);
    return {FindCommand(name, true), name, line.substr(open + 1, line.size() - open - 2)};
}

std::string ReadableProtocolLine(std::string_view line, const CodePage& code_page) {
    const ProtocolLine parts = ParseProtocolLine(line);
    if (parts.command && parts.command->argument == kHexText)
        return std::string(parts.name) + "(\"" + ToUtf8(FromHexText(parts.argument)) + "\")";
    return ToUtf8(code_page.Decode(line));
}

std::string ToHexText(TextView text) {
    std::string hex;
    hex.reserve(text.size() * 4);
    for (const char16_t c : text)
        for (int shift = 12; shift >= 0; shift -= 4)
            hex += kHexDigits[(c >> shift) & 0xF];
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
