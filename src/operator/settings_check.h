#pragma once

#include "operator/settings_file.h"

#include <vector>

namespace tarnex {

// Something about the settings that an operator should know.
struct Finding {
    enum class Level { kWarning, kError }; // error: the service cannot do its work, or is open
    Level level;
    std::string name; // of the setting, or the line of the file
    std::string text; // what is the matter and what to do, in one sentence or two
};

// What is wrong or dangerous, in the order of the catalogue; stray lines of the file last.
std::vector<Finding> CheckSettings(const SettingsFile& file);

// The same of a telephone number alone; nothing when it is well.
std::optional<Finding> CheckAlarmNumber(const Setting& number, TextView value);

// And what the machine says of the ports that the settings name.
std::vector<Finding> CheckSettingsHere(const OperatorWorld& world, const SettingsFile& file);

} // namespace tarnex
