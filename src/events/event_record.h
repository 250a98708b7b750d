#pragma once

#include "platform/text.h"

#include <cstdint>
#include <optional>

namespace tarnex {

// Stands between the machine name and the memo of an event record.
inline constexpr TextView kMemoDelimiter = u"{[b^k^]}";

// The parsed event of which a notification tells.
struct EventRecord {
    std::int16_t MachineNo = 0;
    std::int16_t ServiceNo = 0; // index into the service names
    Text StatusNo = u"0";       // one digit, index into the state names
    std::int16_t AutoNo = 0;    // index into the action names
    Text SMSableNo = u"0";      // "1": goes out by SMS
    Text EmailableNo = u"0";    // "1": goes out by mail
    Text MachineName;           // may be empty
    Text Memo;                  // may be empty
};

// The event of a record as monitoring programs send it, for example
//     1301010服务器{[b^k^]}WebMon
// machine 1, service 30, state 1, action 0, by SMS but not by mail, machine name, memo. Whatever
// a record lacks is 0, "0" for a flag, or empty.
EventRecord ParsedRecord(TextView record);

// The vocabulary of notifications, commands and log rows. Each table answers every index of its
// range, with an empty text where it has no name, and nothing outside.
std::optional<TextView> ServiceName(int index); // 0 to 90
std::optional<TextView> StateName(int index);   // 0 to 9
std::optional<TextView> ActionName(int index);  // 0 to 9, what the system does by itself
std::optional<TextView> CommandName(int index); // 0 to 9, what a command SMS asks for

} // namespace tarnex
