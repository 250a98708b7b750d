#include "notify/sms_queue.h"

#include <utility>

namespace tarnex {

namespace {

constexpr Duration kSendPeriod = 8s;
constexpr Duration kFirstSendDelay = 3s;
constexpr Duration kCheckPeriod = 3s;
constexpr int kSMSLostTime = 35; // s

constexpr TextView kTestText = u"这是一条测试短信，用来检查短信能否正常发送，如果您收到了这条短信，"
                               u"说明短信发送一切正常，请勿回复。";

} // namespace

SMSQueue::SMSQueue(Parts parts)
    : mSMSSendTimer(parts.clock, kSendPeriod, [this] { return mSMSSendTimer_Timer(); }),
      mSMSSendChkTimer(parts.clock, kCheckPeriod, [this] { mSMSSendChkTimer_Timer(); }),
      parts_(std::move(parts)) {}

void SMSQueue::Reset() {
    mSMSSendTimer.Reset(kFirstSendDelay);
    mSMSSendChkTimer.Reset(kCheckPeriod);
    ClearSMSFifo();
}

void SMSQueue::ClearSMSFifo() {
    totals_.DroppedByReset += SMSFifo_.Size() + (held_.entry.empty() ? 0 : 1);
    EndHeld(Fate::kDropped);
    while (!SMSFifo_.Empty())
        parts_.messages.Ended(SMSFifo_.Pop().id, Fate::kDropped);
    SendErrorCount_ = 0;
}

void SMSQueue::QueueSMS(const Text& entry, const MessageOrigin& origin) {
    const MessageId id = parts_.messages.Queued({.way = MessageWay::kSMS,
                                                 .number = TextView(entry).substr(0, 1),
                                                 .text = TextView(entry).substr(!entry.empty()),
                                                 .origin = origin});
    if (const auto oldest = SMSFifo_.Push({.entry = entry, .id = id})) {
        ++totals_.PushedOut;
        parts_.messages.Ended(oldest->id, Fate::kPushedOut);
    }
}

void SMSQueue::mCmdSend_Click() {
    QueueSMS(u"1" + Text(kTestText));
}

Task<> SMSQueue::mSMSSendTimer_Timer() {
    UnitState& unit = parts_.unit;
    if (!unit.UnitConnected || !parts_.may_send())
        co_return;
    const UnitGuard guard(unit);
    if (!guard.Taken())
        co_return;
    mSMSSendTimer.Disable();
    if (SendErrorCount_ == 0)
        TakeNextEntry();
    if (held_.entry.empty()) {
        mSMSSendTimer.Enable();
        co_return;
    }

    const int recipient = LeadingInt16(held_.entry.substr(0, 1)).value_or(0);
    const Text text = held_.entry.substr(1);
    parts_.sender.SetSMSLostTime(kSMSLostTime);
    parts_.messages.Attempting(held_.id);
    const Text answer = co_await parts_.sender.SendSMS(text, recipient);
    if (guard.Lost())
        co_return;
    if (answer == u"OK")
        HandedOver();
    else
        NotTaken(answer);
}

void SMSQueue::TakeNextEntry() {
    if (parts_.before_next)
        parts_.before_next();
    held_ = SMSFifo_.Empty() ? Waiting() : SMSFifo_.Pop();
    if (held_.entry.empty() || held_.entry == kNoData)
        EndHeld(Fate::kDropped); // what says nothing
}

void SMSQueue::EndHeld(Fate fate) {
    if (const MessageId id = std::exchange(held_, {}).id)
        parts_.messages.Ended(id, fate);
}

void SMSQueue::HandedOver() {
    Log(u"发送到 Tarnex,等待返回");
    mSMSSendChkTimer.Enable();
}

void SMSQueue::NotTaken(const Text& answer) {
    last_result_ = answer;
    parts_.messages.Attempted(held_.id, answer);
    ++totals_.Refused;
    Log(u"发送到 Tarnex失败");
    Log(u"系统返回:" + answer);
    CountSendError(false);
    mSMSSendChkTimer.Disable();
    mSMSSendTimer.Enable();
}

void SMSQueue::mSMSSendChkTimer_Timer() {
    if (!parts_.unit.UnitConnected || parts_.unit.UnitBusy())
        return;
    mSMSSendChkTimer.Disable();
    const Text answer = parts_.sender.SMSSendChk();
    if (answer == u"Busy") {
        Log(u"Tarnex 在发送中");
        mSMSSendChkTimer.Enable();
        return;
    }
    last_result_ = answer;
    parts_.messages.Attempted(held_.id, answer);
    if (answer == u"SendOK")
        Sent();
    else if (answer == u"SendFail" || answer == u"SendLost")
        NotSent(answer);
    else
        parts_.reset_unit_state(); // the unit forgot what it was given: nothing else can be trusted
}

void SMSQueue::Sent() {
    ++totals_.Sent;
    parts_.lists.Count(Total::kSMSSent);
    Log(u"发送成功");
    CountSendError(true);
    mSMSSendTimer.Enable();
}

void SMSQueue::NotSent(const Text& answer) {
    const bool failed = answer == u"SendFail";
    ++(failed ? totals_.Failed : totals_.Lost);
    Log(u"错误原因　　:" + answer);
    parts_.lists.Count(failed ? Total::kSMSFailed : Total::kSMSLost);
    CountSendError(false);
    mSMSSendTimer.Enable();
}

void SMSQueue::CountSendError(bool succeeded) {
    if (succeeded) {
        SendErrorCount_ = 0;
        EndHeld(Fate::kSent);
        return;
    }
    ++SendErrorCount_;
    Log(u"发送错误次数:" + ToText(SendErrorCount_));
    if (SendErrorCount_ == kSendErrorLimit) {
        SendErrorCount_ = 0;
        EndHeld(Fate::kGivenUp);
        ++totals_.GivenUp;
        Log(u"已达到最大发送错误次数，算了吧");
    }
}

} // namespace tarnex
