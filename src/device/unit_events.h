#pragma once

#include "platform/text.h"

#include <cstdint>
#include <optional>

namespace tarnex {

// What a line of the unit that answers no command reports.
enum class UnitEvent {
    kNone,        // no event: the line may be a command's answer
    kSignal,      // signal quality
    kSendOK,      // the running SMS was sent
    kSendFail,    // the running SMS was not sent
    kState,       // a state word for the state queue
    kReceivedSMS, // a received SMS record
};

struct ClassifiedLine {
    UnitEvent event = UnitEvent::kNone;
    TextView state_word; // kState only
};

// The first matching test decides. A test looks anywhere in the line, except that of a received
// SMS, which must begin the line.
ClassifiedLine ClassifyLine(TextView line);

// The code by which monitoring programs are told of a state word; "" of the words by which a unit
// says that it has restarted.
TextView CodeOfState(TextView state_word);

// "TX:TXCSQ(23,0)" is 23: the first value of a signal line, rounded to a whole number; nothing when
// the line is malformed or the value does not fit 16 bits.
std::optional<std::int16_t> SignalQuality(TextView line);

} // namespace tarnex
