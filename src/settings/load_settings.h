#pragma once

#include "settings/ini_document.h"
#include "settings/settings.h"

namespace tarnex {

// The settings of one reading of the file, and its two run gates.
struct LoadedSettings {
    Settings settings;
    bool enabled = false; // Service/Enable is not "Disable"
    bool allowed = false; // Check1(13) is "1"
};

// A number that does not fit 16 bits keeps the value it has in previous.
LoadedSettings ReadSettings(const IniDocument& file, const Settings& previous);

} // namespace tarnex
