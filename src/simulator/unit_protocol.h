#pragma once

#include "platform/clock.h"
#include "platform/code_page.h"

#include <span>
#include <string>
#include <string_view>

namespace tarnex {

// What a unit holds, as bytes of its line. A restart clears the display and the PC alarm only.
struct UnitMemory {
    std::string Number1 = "13900000001";
    std::string Number2 = "13900000002";
    std::string SmsCentre{};           // hex text
    std::string AlarmTime{};           // WRDT
    std::string SendTimes{};           // WRAT
    std::string PowerAlarm = "0";      // "1" switched on
    std::string ConnectionAlarm = "0"; // "1" switched on
    std::string Name{};                // hex text
    std::string NameMode = "0";        // "1" the name is used
    std::string Serial = "SIM00000001";
    std::string Version = "TARNEX-SIM 1.0";
    std::string Lcd1{};
    std::string Lcd2{};
    std::string PcAlarm{};        // "" no alarm
    std::string AlarmState = "0"; // RDALARM; "1" while mains power is lost
};

enum class ProtocolAction {
    kGreet,
    kReportSignal,
    kStore,       // the argument goes into the field; answers "OK"
    kSet,         // the row's text goes into the field; answers "OK"
    kTell,        // answers text + field + ")", or the bare field where there is no text
    kFreeDisplay, // answers "OK"
    kSendSms,     // to the number in the field; answers "OK"
    kReset,       // answers "RESET OK", then restarts
};

enum class ProtocolArgument { kNone, kPlain, kHexText };

// One command of the unit: name, or name + "(" + argument + ")", behind "~TX:".
struct ProtocolCommand {
    std::string_view name;
    ProtocolArgument argument;
    ProtocolAction action;
    std::string UnitMemory::*field;
    std::string_view text;
};

std::span<const ProtocolCommand> ProtocolCommands();

// A command line taken apart. The texts are parts of the line.
struct ProtocolLine {
    const ProtocolCommand* command; // nullptr: the unit has no such command
    std::string_view name;
    std::string_view argument;
};
// line: without "~TX:" and line end.
ProtocolLine ParseProtocolLine(std::string_view line);

// The line in UTF-8 for people, hex text decoded: WRName("门卫").
std::string ReadableProtocolLine(std::string_view line, const CodePage& code_page);

// Hex text as the unit speaks it: four upper-case hexadecimal digits a character.
std::string ToHexText(TextView text);
// Groups of four digits; what is no such group becomes "?".
Text FromHexText(std::string_view hex);

// The unit's line for a received SMS, without line end:
// TX:SMRCV(REC UNREAD,"00310033",,"24/05/06,08:00:00+32",4F60597D,0,OK)
std::string MakeReceivedRecord(TextView number, const CalendarTime& when, TextView text);

} // namespace tarnex
