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
    SMSBusy = false;
    SMSResult.clear();
    SMSLostTime = kDefaultLostTime;
}

Task<Text> SMSModem::SendSMS(Text text, int target) {
    if (SMSBusy)
        co_return Text(u"Busy");
    SMSResult.clear();
    SMSBusy = true;
    const Text result = co_await commands_.SENDSMS(text, target);
    if (result == kFailed) {
        SMSBusy = false;
        co_return Text(kFailed);
    }
    SMSTimer.SetInterval(kTick);
    SMSCount = SMSLostTime;
    SMSTimer.Enable();
    co_return Text(kOk);
}

void SMSModem::CountDown() {
    --SMSCount;
    trace_.DebugAdd(u"SMSCount:", ToText(SMSCount));
    if (SMSCount < 1) {
        SMSResult = u"SendLost";
        SMSTimer.Disable();
    }
}

void SMSModem::ReportResult(TextView result) {
    SMSTimer.Disable();
    SMSResult = result;
}

Text SMSModem::SMSSendChk() {
    if (!SMSBusy)
        return u"Free";
    if (SMSResult.empty())
        return u"Busy";
    SMSBusy = false;
    return SMSResult;
}

Text SMSModem::GetSMS() {
    const Text record = reader_.GetSMSFifo();
    if (record == kNoData)
        return record;
    CutSMSRecord(record, received_);
    return u"NewMsg";
}

} // namespace tarnex
