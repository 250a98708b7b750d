#pragma once

#include "platform/text.h"

#include <cstdint>

namespace tarnex {

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

} // namespace tarnex
