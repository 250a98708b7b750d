#pragma once

#include "operator/settings_file.h"

#include <vector>

namespace tarnex {

// What an operator should know of one serial port of the settings.
struct PortState {
    enum class Level { kGood, kWarning, kError }; // error: the service cannot open it
    Level level;
    std::string name;    // "COM1"
    std::string setting; // that names its device; "" for a device that none names
    std::string text;    // the device, what sits on it, what is the matter and what to do
    bool there = false;
    bool of_settings = false; // what is the matter is no passing state
};

// The ports whose devices the settings name, then the others that are there. service: the process
// of the one that runs, which may hold them; 0 for none.
std::vector<PortState> LookAtPorts(const OperatorWorld& world, const SettingsFile& settings,
                                   long service);

// One line for each port that is there: its name, and what sits on it.
std::vector<std::string> PortsThere(const OperatorWorld& world);

} // namespace tarnex
