#pragma once

#include "platform/settings_store.h"
#include "settings/ini_document.h"

#include <array>
#include <functional>
#include <string>

namespace tarnex {

// What is read once, when the program starts; a change takes effect with the next start.
struct StartSettings {
    std::array<std::string, 20> device_paths; // of COM1 to COM20; "" where the default holds
    std::string bind_address = "127.0.0.1";   // of the control-link sockets
    std::string code_page = "GBK";            // of the settings file, datagrams, mails and lines
    friend bool operator==(const StartSettings&, const StartSettings&) = default;
};

// Sections [SerialPorts], [ControlLink] and [Encoding]; what is not set keeps its default.
StartSettings ReadStartSettings(const IniDocument& file);

// The first reading of a program. Another program may be writing the file anew just then: where it
// is missing, cannot be read or leaves a run gate closed, it is read again after pause().
SettingsReading ReadAtStart(const SettingsStore& store, const CodePage& code_page,
                            const std::function<void()>& pause);

// For an operator: the file cannot be read and why, without a full stop.
std::string Unreadable(const std::string& file, std::error_code problem);

// What to do about it, in sentences; for_rights where the rights are missing.
std::string ReadingAdvice(std::error_code problem, const std::string& for_rights);

// The settings file: system/Tarnex.ini below the folder that the environment variable WINDIR
// names; windir is nullptr or "" where it is not set.
std::string SettingsPath(const char* windir);

} // namespace tarnex
