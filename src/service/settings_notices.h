#pragma once

#include "settings/load_settings.h"
#include "settings/my_ini_file.h"

#include <string>

namespace tarnex {

// Why the settings in store end the service and what to do about it, for an operator.
std::string WhyServiceEnds(const SettingsStore& store, const LoadedSettings& loaded);

// What is wrong with reading the settings file and what to do about it, for an operator; "" when
// the last look at it found none that cannot be read.
std::string WhyNotRead(const SettingsStore& store, const MyIniFile& ini);

// What the file says by now instead of in_use, which holds until the end of the service, and what
// to do about it, for an operator; "" when it says the same.
std::string WhyRestart(const SettingsStore& store, const StartSettings& in_use,
                       const StartSettings& now, const SystemWords& words);

// What is wrong with writing to the settings file in store and what to do about it, for an
// operator; "" when the last write succeeded.
std::string WhyNotWritten(const SettingsStore& store, const MyIniFile& ini);

} // namespace tarnex
