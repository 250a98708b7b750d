#pragma once

#include "platform/text.h"

namespace tarnex {

// The fixed words with which the device link tells outcomes.
inline constexpr TextView kOk = u"OK";
inline constexpr TextView kFailed = u"Failed"; // no answer in time, or a wrong one
inline constexpr TextView kNoData = u"NoData"; // a queue is empty

// kOk when the answer begins with "OK", else kFailed.
Text CheckOK(TextView answer);

// NO1(12345), cut by "NO1(", is 12345: the answer without the prefix and without its last
// character. kFailed when it does not begin with the prefix or has nothing behind it.
Text CutAnswer(TextView answer, TextView prefix);

// Text as the unit stores it: four hexadecimal digits a character. Codes below 16 and from 256 to
// 4095 come out as one and three digits: the unit's own format.
Text HexEncode(TextView text);
// Back again, in groups of four; a group that is not hexadecimal adds nothing, a short last group
// counts as it stands.
Text HexDecode(TextView hex);

} // namespace tarnex
