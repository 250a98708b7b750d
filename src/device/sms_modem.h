#pragma once

#include "device/command_set.h"

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

// Sends SMS, one at a time: what the SMS queue wants of the unit.
class SMSSender {
  public:
    virtual ~SMSSender() = default;

    // Hands one SMS to the unit, for its stored number target (1, else the second): "OK" when it
    // was taken, "Busy" while an earlier one is open, else kFailed.
    virtual Task<Text> SendSMS(Text text, int target) = 0;
    // How the SMS that was taken fares: "Busy" while it is under way; then, once, "SendOK",
    // "SendFail" or "SendLost"; "Free" when there is none.
    virtual Text SMSSendChk() = 0;
    // How long later sends wait for the unit's report, in seconds.
    virtual void SetSMSLostTime(int seconds) = 0;
};

// Sends SMS through the unit, one at a time, and takes received ones out of the inbox.
class SMSModem : public SMSSender {
  public:
    // The parts must outlive the modem.
    SMSModem(Clock& clock, CommandSet& commands, ResponseReader& reader, DeviceTrace& trace);

    Task<Text> SendSMS(Text text, int target) override;
    Text SMSSendChk() override;
    void SetSMSLostTime(int seconds) override { SMSLostTime_ = seconds; }
    // The unit reported the outcome of the open send.
    void ReportResult(TextView result);

    // Takes the oldest received SMS: "NewMsg" and the fields below hold it, or kNoData.
    Text GetSMS();
    const Text& GetSMSTelNo() const { return received_.TelNo; }
    const Text& GetSMSDate() const { return received_.Date; }
    const Text& GetSMSTime() const { return received_.Time; }
    const Text& GetSMSMsg() const { return received_.Msg; }

    void Init();

    Timer SMSTimer;

  private:
    void CountDown();

    CommandSet& commands_;
    ResponseReader& reader_;
    DeviceTrace& trace_;
    bool SMSBusy_ = false;
    Text SMSResult_;
    int SMSLostTime_ = 60; // s
    int SMSCount_ = 0;     // s
    ReceivedSMS received_;
};

} // namespace tarnex
