#pragma once

#include "simulator/unit_memory.h"

#include <span>
#include <string_view>

namespace tarnex {

enum class UnitAction {
    kGreet,
    kReportSignal,
    kStore,       // the argument goes into the field; answers "OK"
    kSet,         // the row's text goes into the field; answers "OK"
    kTell,        // answers text + field + ")", or the bare field where there is no text
    kFreeDisplay, // answers "OK"
    kSendSms,     // to the number in the field; answers "OK"
    kReset,       // answers "RESET OK", then restarts
};

// One command of the unit: name, or name + "(" + argument + ")", behind "~TX:".
struct UnitCommand {
    std::string_view name;
    bool takes_argument;
    UnitAction action;
    std::string UnitMemory::*field;
    std::string_view text;
};

std::span<const UnitCommand> UnitCommands();

} // namespace tarnex
