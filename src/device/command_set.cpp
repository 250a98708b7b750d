#include "device/command_set.h"

namespace tarnex {

enum class Argument {
    kNone,
    kPlain,
    kHex,     // HexEncode
    kDisplay, // the first 20 characters: the width of the unit's display
};

enum class Rule {
    kOk,      // CheckOK
    kCut,     // CutAnswer by the prefix
    kCutHex,  // the same, then HexDecode
    kVersion, // the answer as it is, when it has 9 characters or more
    kReset,   // "OK" when the answer contains the prefix
};

struct Command {
    TextView text; // sent after "~TX:"; one that ends in "(" takes an argument and ")"
    Argument argument;
    Rule rule;
    TextView prefix;
};

namespace {

// clang-format off
//                                text            argument            result          prefix
constexpr Command kLCD1       = {u"LCD1(",       Argument::kDisplay, Rule::kOk,      u""};
constexpr Command kLCD2       = {u"LCD2(",       Argument::kDisplay, Rule::kOk,      u""};
constexpr Command kLCDFree    = {u"LCDFree",     Argument::kNone,    Rule::kOk,      u""};
constexpr Command kRDALARM    = {u"RDALARM",     Argument::kNone,    Rule::kCut,     u"ALARM("};
constexpr Command kPCAlarm    = {u"PCAlarm(",    Argument::kDisplay, Rule::kOk,      u""};
constexpr Command kPCAlarmOff = {u"PCAlarmOff",  Argument::kNone,    Rule::kOk,      u""};
constexpr Command kChkVer     = {u"ChkVer",      Argument::kNone,    Rule::kVersion, u""};
constexpr Command kRDNO1      = {u"RDNO1",       Argument::kNone,    Rule::kCut,     u"NO1("};
constexpr Command kRDNO2      = {u"RDNO2",       Argument::kNone,    Rule::kCut,     u"NO2("};
constexpr Command kWRNO1      = {u"WRNO1(",      Argument::kPlain,   Rule::kOk,      u""};
constexpr Command kWRNO2      = {u"WRNO2(",      Argument::kPlain,   Rule::kOk,      u""};
constexpr Command kWRDT       = {u"WRDT(",       Argument::kPlain,   Rule::kOk,      u""};
constexpr Command kRDDT       = {u"RDDT",        Argument::kNone,    Rule::kCut,     u"DT("};
constexpr Command kWRAT       = {u"WRAT(",       Argument::kPlain,   Rule::kOk,      u""};
constexpr Command kRDAT       = {u"RDAT",        Argument::kNone,    Rule::kCut,     u"AT("};
constexpr Command kTXPWRON    = {u"TXPWRON",     Argument::kNone,    Rule::kOk,      u""};
constexpr Command kTXPWROFF   = {u"TXPWROFF",    Argument::kNone,    Rule::kOk,      u""};
constexpr Command kTXCONON    = {u"TXCONON",     Argument::kNone,    Rule::kOk,      u""};
constexpr Command kTXCONOFF   = {u"TXCONOFF",    Argument::kNone,    Rule::kOk,      u""};
constexpr Command kWRCSCA     = {u"WRCSCA(",     Argument::kHex,     Rule::kOk,      u""};
constexpr Command kRDCSCA     = {u"RDCSCA",      Argument::kNone,    Rule::kCutHex,  u"TXCSCA("};
constexpr Command kRESET      = {u"RESET",       Argument::kNone,    Rule::kReset,   u"RESET OK"};
constexpr Command kWRName     = {u"WRName(",     Argument::kHex,     Rule::kOk,      u""};
constexpr Command kRDName     = {u"RDName",      Argument::kNone,    Rule::kCutHex,  u"Name("};
constexpr Command kEnName     = {u"EnName",      Argument::kNone,    Rule::kOk,      u""};
constexpr Command kDisName    = {u"DisName",     Argument::kNone,    Rule::kOk,      u""};
constexpr Command kRDNAMESt   = {u"RDNAMESt",    Argument::kNone,    Rule::kCut,     u"NameSt("};
constexpr Command kRDSerial   = {u"RDSerial",    Argument::kNone,    Rule::kCut,     u"Serial("};
constexpr Command kWRSerial   = {u"QorvexWsr(",  Argument::kPlain,   Rule::kOk,      u""};
constexpr Command kSENDSMS1   = {u"SENDSMS1(",   Argument::kHex,     Rule::kOk,      u""};
constexpr Command kSENDSMS2   = {u"SENDSMS2(",   Argument::kHex,     Rule::kOk,      u""};
// clang-format on

constexpr TextView kQuerySignal = u"RDCSQ";
constexpr std::size_t kDisplayWidth = 20;
constexpr std::size_t kShortestVersion = 9;

Text CommandText(const Command& command, TextView argument) {
    Text text(command.text);
    switch (command.argument) {
    case Argument::kNone:
        return text;
    case Argument::kPlain:
        text += argument;
        break;
    case Argument::kHex:
        text += HexEncode(argument);
        break;
    case Argument::kDisplay:
        text += argument.substr(0, kDisplayWidth);
        break;
    }
    return text += u")";
}

Text ResultOf(const Command& command, const Text& answer) {
    switch (command.rule) {
    case Rule::kOk:
        return CheckOK(answer);
    case Rule::kCut:
        return CutAnswer(answer, command.prefix);
    case Rule::kCutHex: {
        Text cut = CutAnswer(answer, command.prefix);
        return cut == kFailed ? cut : HexDecode(cut);
    }
    case Rule::kVersion:
        return answer.size() >= kShortestVersion ? answer : Text(kFailed);
    case Rule::kReset:
        return Text(Contains(answer, command.prefix) ? kOk : kFailed);
    }
    return Text(kFailed);
}

Task<Text> SendsNothing() {
    co_return Text();
}

} // namespace

CommandSet::CommandSet(Clock& clock, CommandSender& sender, ResponseReader& reader,
                       DeviceTrace& trace, DebugLists& lists)
    : CSQTimer(clock, 1s, [this] { return TraceCSQ(); }), sender_(sender), reader_(reader),
      trace_(trace), lists_(lists) {}

Task<Text> CommandSet::Run(const Command& command, Text argument) {
    const Text answer = co_await sender_.SendCommand(CommandText(command, argument));
    co_return ResultOf(command, answer);
}

Task<Text> CommandSet::RDCSQ() {
    reader_.TarnexLostTimer.Enable();
    const bool sent = co_await sender_.SendRaw(Text(kQuerySignal));
    if (!sent)
        co_return Text(u"-2");
    lists_.List2Additem(u"Send:~TX:RDCSQ");
    trace_.DebugAdd(u"SendRDCSQ");
    co_return ToText(reader_.CSQ);
}

Task<> CommandSet::TraceCSQ() {
    const Text quality = co_await RDCSQ();
    trace_.DebugAdd(quality);
}

Task<Text> CommandSet::RESET_NOBACK() {
    co_await sender_.SendRaw(Text(kRESET.text));
    co_await sender_.RawCommandLeft();
    co_return Text();
}

Task<Text> CommandSet::LCD(const Text& text, const Text& line) {
    if (line == u"1")
        return Run(kLCD1, text);
    if (line == u"2")
        return Run(kLCD2, text);
    return Run(kLCDFree);
}

Task<Text> CommandSet::NameMode(const Text& mode) {
    if (mode == u"On")
        return Run(kEnName);
    if (mode == u"Off")
        return Run(kDisName);
    if (mode == u"Get")
        return Run(kRDNAMESt);
    return SendsNothing();
}

// clang-format off
Task<Text> CommandSet::RDALARM()                    { return Run(kRDALARM); }
Task<Text> CommandSet::PCAlarm(const Text& text)    { return Run(kPCAlarm, text); }
Task<Text> CommandSet::PCAlarmOff()                 { return Run(kPCAlarmOff); }
Task<Text> CommandSet::ChkVer()                     { return Run(kChkVer); }
Task<Text> CommandSet::RDNO(const Text& index)      { return Run(index == u"1" ? kRDNO1 : kRDNO2); }
Task<Text> CommandSet::WRNO(const Text& number, const Text& index) {
    return Run(index == u"1" ? kWRNO1 : kWRNO2, number);
}
Task<Text> CommandSet::WRDT(const Text& text)       { return Run(kWRDT, text); }
Task<Text> CommandSet::RDDT()                       { return Run(kRDDT); }
Task<Text> CommandSet::WRAT(const Text& text)       { return Run(kWRAT, text); }
Task<Text> CommandSet::RDAT()                       { return Run(kRDAT); }
Task<Text> CommandSet::TXPWR(const Text& mode)      { return Run(mode == u"On" ? kTXPWRON : kTXPWROFF); }
Task<Text> CommandSet::TXCON(const Text& mode)      { return Run(mode == u"On" ? kTXCONON : kTXCONOFF); }
Task<Text> CommandSet::WRCSCA(const Text& number)   { return Run(kWRCSCA, number); }
Task<Text> CommandSet::RDCSCA()                     { return Run(kRDCSCA); }
Task<Text> CommandSet::RESET()                      { return Run(kRESET); }
Task<Text> CommandSet::WRName(const Text& name)     { return Run(kWRName, name); }
Task<Text> CommandSet::RDName()                     { return Run(kRDName); }
Task<Text> CommandSet::RDSerial()                   { return Run(kRDSerial); }
Task<Text> CommandSet::WRSerial(const Text& serial) { return Run(kWRSerial, serial); }
Task<Text> CommandSet::SENDSMS(const Text& text, int target) {
    return Run(target == 1 ? kSENDSMS1 : kSENDSMS2, text);
}
// clang-format on

} // namespace tarnex
