#pragma once

#include "platform/text.h"

#include <array>
#include <string>
#include <vector>

namespace tarnex {

// What a value must be like.
enum class SettingKind {
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

// A key of the settings file as an operator sees it.
struct Setting {
    std::string group; // heading that it belongs under
    Text section;
    Text key;
    std::string name; // plain English, in words and hyphens
    SettingKind kind = SettingKind::kText;
    std::string meaning;      // what the setting is
    std::string when_set;     // what a switch that is on, or a value, does; "{}" is the value
    std::string when_not_set; // what a switch that is off, or no value, does; "{}" is the default
    std::string in_force;     // when a change takes effect
    int lowest = 0;           // of a number
    int highest = 0;
    std::string choices;        // of a choice, parted by "|"
    Text on = u"1";             // of a switch, as it is stored
    Text off = u"0";            // the same
    bool on_unless_off = false; // of a switch: every value but off counts as on
    bool kept_in_unit = false;  // written into the unit when it changes
    int port = 0;               // whose device it names; 0 for none
};

// Every key that the service reads or writes, in the order of the groups.
const std::vector<Setting>& SettingCatalog();

// "quiet-sunday" for 0, to 6
std::string QuietSettingName(int weekday);

// By plain name or by key, without case; for a key that stands in several sections "section/key"
// says which. nullptr when there is none.
const Setting* FindSetting(const std::string& name);
const Setting* FindSetting(TextView section, TextView key);

// The plain name that is closest to name, or "" when none is close.
std::string ClosestSettingName(const std::string& name);

// Whether a switch with that value counts as on.
bool IsOn(const Setting& setting, TextView value);

// What the value does now, in words. ports: the devices of COM1 to COM20 where none are set.
std::string Effect(const Setting& setting, TextView value,
                   const std::array<std::string, 20>& ports);

} // namespace tarnex
