#pragma once

#include "events/event_record.h"

namespace tarnex {

// Stands between the machine name and the memo of an event record.
inline constexpr TextView kMemoDelimiter = u"{[b^k^]}";

// The event of a record as monitoring programs send it, for example
//     1301010服务器{[b^k^]}WebMon
// machine 1, service 30, state 1, action 0, by SMS but not by mail, machine name, memo. Whatever
// a record lacks is 0, "0" for a flag, or empty.
EventRecord ParsedRecord(TextView record);

} // namespace tarnex
