#pragma once

#include "settings/settings.h"

#include <cstdint>
#include <string_view>

namespace tarnex {

enum class SettingKind : std::uint8_t {
    kSwitch,
    kNumber,
    kText,
    kPhone,
    kTime,   // of day
    kChoice, // one word of a list
    kPath,   // of a file
    kServer, // host, or host ":" port
    kMailAddress,
    kIpAddress,
    kPassword, // not shown in lists
    kRecord,   // written by the service alone
};

// What a value must be like, and what counts where there is none: a switch is off, or on if it is
// on unless it is switched off, a number is 0, a text is empty or the default.
struct SettingValues {
    SettingKind kind = SettingKind::kText;
    int lowest = 0; // of a number
    int highest = 0;
    std::string_view choices{};      // of a choice, parted by "|"
    TextView on = u"1";              // of a switch, as it is stored
    TextView off = u"0";             // the same
    bool on_unless_off = false;      // of a switch: every value but off counts as on
    std::string_view default_text{}; // of a text
};

// A key of the settings file.
struct Setting {
    std::string_view group; // heading that it belongs under
    TextView section;
    TextView key;
    std::string_view name; // plain English, in words and hyphens
    const SettingValues& values;
    std::string_view in_force; // when a change takes effect
    std::string_view meaning;  // what the setting is
    std::string_view when_set; // what a switch that is on, or a value, does; "{}" is the value
    std::string_view
        when_not_set; // what a switch that is off, or no value, does; "{}": the default
    // Puts a value where the service uses it; nullptr for what is read from the file when needed.
    void (*land)(LoadedSettings& to, const Setting& setting, TextView value) = nullptr;
    TextView record{}; // key of the device record, if the setting is kept in the unit

    constexpr SettingKind Kind() const { return values.kind; }
};

// The device record: the section with the values that were last written into the unit.
inline constexpr TextView kDeviceRecord = u"TarnexComm";

// Whether a switch with that value counts as on.
constexpr bool IsOn(const Setting& setting, TextView value) {
    const SettingValues& values = setting.values;
    return values.on_unless_off ? value != values.off : value == values.on;
}

} // namespace tarnex
