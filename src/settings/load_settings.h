#pragma once

#include "platform/settings_store.h"
#include "platform/system_words.h"
#include "settings/ini_document.h"
#include "settings/settings.h"

#include <functional>

namespace tarnex {

// A number that does not fit 16 bits keeps the value it has in previous.
LoadedSettings ReadSettings(const IniDocument& file, const Settings& previous = {});

// The first reading of a program. Another program may be writing the file anew just then: where it
// is missing, cannot be read or leaves a run gate closed, it is read again after pause().
SettingsReading ReadAtStart(const SettingsStore& store, const CodePage& code_page,
                            const std::function<void()>& pause);

// For an operator: the file cannot be read and why, without a full stop.
std::string Unreadable(const std::string& file, std::error_code problem);

// What to do about it, in sentences; for_rights where the rights are missing.
std::string ReadingAdvice(std::error_code problem, const std::string& for_rights);

// The settings file: system/Tarnex.ini below the folder that the environment variable WINDIR
// names; where that is "", below the one where the service of this system has it.
std::string SettingsPath(const std::string& windir, const SystemWords& words);

} // namespace tarnex
