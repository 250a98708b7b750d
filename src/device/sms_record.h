#pragma once

#include "platform/text.h"

namespace tarnex {

// A received SMS, as far as its record could be cut.
struct ReceivedSMS {
    Text TelNo;
    Text Date;
    Text Time;
    Text Msg;
};

// Cuts a record of the unit into fields:
//   TX:SMRCV("REC UNREAD","00310033",,"24/05/06,08:00:00+32",<hex text>...OK)
// A field whose separators are missing or stand too close keeps the value it had.
void CutSMSRecord(TextView record, ReceivedSMS& fields);

} // namespace tarnex
