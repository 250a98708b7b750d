#pragma once

#include "platform/task.h"
#include "platform/text.h"

namespace tarnex {

// The unit as the SMS queue sees it.
class SMSSender {
  public:
    virtual ~SMSSender() = default;

    // Hands one SMS to the unit, for its stored number target (1, else the second): "OK" when it
    // was taken, "Busy" while an earlier one is open, else "Failed".
    virtual Task<Text> SendSMS(Text text, int target) = 0;
    // How the SMS that was taken fares: "Busy" while it is under way; then, once, "SendOK",
    // "SendFail" or "SendLost"; "Free" when there is none.
    virtual Text SMSSendChk() = 0;
    // How long later sends wait for the unit's report, in seconds.
    virtual void SetSMSLostTime(int seconds) = 0;
};

} // namespace tarnex
