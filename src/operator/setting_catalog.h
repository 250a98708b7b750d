#pragma once

#include "settings/setting_table.h"

#include <array>
#include <string>
#include <vector>

namespace tarnex {

// Every key that the service reads or writes, in the order of the groups: the table of settings,
// and for each one that is kept in the unit the key of the device record.
const std::vector<Setting>& SettingCatalog();

// By plain name or by key, without case; for a key that stands in several sections "section/key"
// says which. nullptr when there is none.
const Setting* FindSetting(const std::string& name);
const Setting* FindSetting(TextView section, TextView key);

// The plain name that is closest to name, or "" when none is close.
std::string ClosestSettingName(const std::string& name);

// What values a setting takes, for people: "on or off", "0 to 20", "hh:mm".
std::string AllowedValues(const Setting& setting);

// The stored form of what an operator typed: on, yes, true and 1 switch a switch on.
Text StoredForm(const Setting& setting, const std::string& typed);

// What is wrong with a stored value that is not empty, to follow its name: "is not a time of day";
// "" when nothing is.
std::string Objection(const Setting& setting, TextView value);

// What the value does now, in words. ports: the devices of COM1 to COM20 where none are set.
std::string Effect(const Setting& setting, TextView value, const SerialPaths& ports);

} // namespace tarnex
