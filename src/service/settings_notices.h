#pragma once

#include "settings/load_settings.h"
#include "settings/my_ini_file.h"

#include <string>

namespace tarnex {

// Why the settings in store end the service and what to do about it, for an operator.
std::string WhyServiceEnds(const SettingsStore& store, const LoadedSettings& loaded);

// What is wrong with writing to the settings file in store and what to do about it, for an
// operator; "" when the last write succeeded.
std::string WhyNotWritten(const SettingsStore& store, const MyIniFile& ini);

} // namespace tarnex
