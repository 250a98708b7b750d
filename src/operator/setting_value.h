#pragma once

#include "operator/setting_catalog.h"

namespace tarnex {

// What values a setting takes, for people: "on or off", "0 to 20", "hh:mm".
std::string AllowedValues(const Setting& setting);

// The stored form of what an operator typed: on, yes, true and 1 switch a switch on.
Text StoredForm(const Setting& setting, const std::string& typed);

// What is wrong with a stored value that is not empty, to follow its name: "is not a time of day";
// "" when nothing is.
std::string Objection(const Setting& setting, TextView value);

} // namespace tarnex
