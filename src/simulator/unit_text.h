#pragma once

#include "platform/clock.h"
#include "platform/text.h"

namespace tarnex {

// Hex text as the unit speaks it: four upper-case hexadecimal digits a character.
std::string ToHexText(TextView text);
// Groups of four digits; what is no such group becomes "?".
Text FromHexText(std::string_view hex);

// The unit's line for a received SMS, without line end:
// TX:SMRCV(REC UNREAD,"00310033",,"24/05/06,08:00:00+32",4F60597D,0,OK)
std::string MakeReceivedRecord(TextView number, const CalendarTime& when, TextView text);

} // namespace tarnex
