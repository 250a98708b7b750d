#pragma once

#include "platform/code_page.h"
#include "simulator/unit_memory.h"

#include <span>
#include <string_view>

namespace tarnex {

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

} // namespace tarnex
