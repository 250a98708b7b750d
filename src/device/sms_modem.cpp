#include "device/sms_modem.h"

#include "device/answer_rules.h"

namespace tarnex {

namespace {

constexpr Duration kTick = 1s;
constexpr int kDefaultLostTime = 60; // s

} // namespace

SMSModem::SMSModem(Clock& clock, CommandSet& commands, ResponseReader& reader, DeviceTrace& trace)
    : SMSTimer(clock, "SMSTimer", kTick, [this] { CountDown(); }), commands_(commands),
      reader_(reader), trace_(trace) {}

void SMSModem::Init() {
    SMSTimer.Disable(); // a send that is forgotten here must not time out the next one
    SMSBusy_ = false;
    SMSResult_.clear();
    SMSLostTime_ = kDefaultLostTime;
}

Task<Text> SMSModem::SendSMS(Text text, int target) {
    if (SMSBusy_)
        co_return Text(u"Busy");
    SMSResult_.clear();
    SMSBusy_ = true;
    const Text result = co_await commands_.SENDSMS(text, target);
    if (result == kFailed) {
        SMSBusy_ = false;
        co_return Text(kFailed);
    }
    SMSTimer.SetInterval(kTick);
    SMSCount_ = SMSLostTime_;
    SMSTimer.Enable();
    co_return Text(kOk);
}

void SMSModem::CountDown() {
    --SMSCount_;
    trace_.DebugAdd(u"SMSCount:", ToText(SMSCount_));
    if (SMSCount_ < 1) {
        SMSResult_ = u"SendLost";
        SMSTimer.Disable();
    }
}

void SMSModem::ReportResult(TextView result) {
    SMSTimer.Disable();
    SMSResult_ = result;
}

Text SMSModem::SMSSendChk() {
    if (!SMSBusy_)
        return u"Free";
    if (SMSResult_.empty())
        return u"Busy";
    SMSBusy_ = false;
    return SMSResult_;
}

Text SMSModem::GetSMS() {
    Text record = reader_.GetSMSFifo();
    if (record == kNoData)
        return record;
    CutSMSRecord(record, received_);
    return u"NewMsg";
}

} // namespace tarnex
