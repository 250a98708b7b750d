#include "device/sms_modem.h"

#include <optional>

namespace tarnex {

namespace {

constexpr Duration kTick = 1s;
constexpr int kDefaultLostTime = 60; // s

// A 1-based position, or nothing when something that it depends on was not found.
using Position = std::optional<std::size_t>;

Position FindAfter(TextView record, TextView what, Position after) {
    if (!after)
        return std::nullopt;
    const auto found = record.find(what, *after);
    return found == TextView::npos ? std::nullopt : Position(found + 1);
}

// The characters from first + skip to last - drop, both counted in; nothing when that is less than
// no characters at all.
std::optional<TextView> Between(TextView record, Position first, std::size_t skip, Position last,
                                std::size_t drop) {
    if (!first || !last || *last + 1 < *first + skip + drop)
        return std::nullopt;
    return record.substr(*first + skip - 1, *last + 1 - drop - *first - skip);
}

} // namespace

void CutSMSRecord(TextView record, ReceivedSMS& fields) {
    const Position comma1 = FindAfter(record, u",", 0);
    const Position comma2 = FindAfter(record, u",", comma1);
    const Position comma3 = FindAfter(record, u",", comma2);
    const Position comma4 = FindAfter(record, u",", comma3);
    const Position quote = FindAfter(record, u"\"", comma4);
    const Position ok = FindAfter(record, u"OK", quote);

    if (const auto number = Between(record, comma1, 2, comma2, 2)) // inside the quotes
        fields.TelNo = HexDecode(*number);
    if (const auto date = Between(record, comma3, 2, comma4, 1)) // behind the opening quote
        fields.Date = *date;
    if (const auto time = Between(record, comma4, 1, quote, 4)) // without the time zone
        fields.Time = *time;
    if (const auto text = Between(record, quote, 2, ok, 4))
        fields.Msg = Trim(HexDecode(*text));
}

SMSModem::SMSModem(Clock& clock, CommandSet& commands, ResponseReader& reader, DeviceTrace& trace)
    : SMSTimer(clock, kTick, [this] { CountDown(); }), commands_(commands), reader_(reader),
      trace_(trace) {}

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
