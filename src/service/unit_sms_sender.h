#pragma once

#include "device/sms_modem.h"
#include "notify/sms_queue.h"

namespace tarnex {

// The unit's SMS modem as the SMS queue wants it.
class UnitSMSSender : public SMSSender {
  public:
    explicit UnitSMSSender(SMSModem& modem) : modem_(modem) {}
    Task<Text> SendSMS(Text text, int target) override {
        return modem_.SendSMS(std::move(text), target);
    }
    Text SMSSendChk() override { return modem_.SMSSendChk(); }
    void SetSMSLostTime(int seconds) override { modem_.SetSMSLostTime(seconds); }

  private:
    SMSModem& modem_;
};

} // namespace tarnex
