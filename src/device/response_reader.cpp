#include "device/response_reader.h"

namespace tarnex {

namespace {

constexpr Duration kSettle = 20ms; // lets the rest of a line arrive
constexpr Duration kBacklogPeriod = 200ms;
constexpr Duration kLostAfter = 60s;
constexpr TextView kAnswerPrefix = u"TX:";

} // namespace

ResponseReader::ResponseReader(Parts parts)
    : ComBadTimer(parts.clock, kBacklogPeriod, [this] { DrainBacklog(); }),
      TarnexLostTimer(parts.clock, kLostAfter,
                      [this] {
                          TarnexLostTimer.Disable();
                          CSQ = -1;
                      }),
      parts_(std::move(parts)) {}

void ResponseReader::Init() {
    TarnexLostTimer.Disable();
    TarnexLostTimer.SetInterval(kLostAfter);
    StateFifo_.Clear();
    newest_is_unread_no_card_ = false;
    SMSFifo_.Clear();
    parts_.rx_buffer.Clear();
    receiving_ = Task<>();
    RxBusy_ = false;
    parts_.answer.SetAnswer(u"");
}

void ResponseReader::MSComm1_OnComm() {
    if (parts_.firmware.FirmMode()) {
        parts_.firmware.OnComm();
        return;
    }
    if (RxBusy_)
        return;
    RxBusy_ = true;
    receiving_ = Receive();
    receiving_.Start();
}

Task<> ResponseReader::Receive() {
    co_await Sleep(parts_.clock, kSettle);
    if (!parts_.firmware.FirmMode())
        TakeInput();
    RxBusy_ = false;
    parts_.port.RaiseIfWaiting();
}

void ResponseReader::TakeInput() {
    if (parts_.port.InBufferCount() == 0)
        return;
    if (!parts_.rx_buffer.Full()) {
        const Text input = parts_.port.Input();
        parts_.lists.List2Additem(u"Get :" + input);
        const bool kept = parts_.rx_buffer.Append(input);
        parts_.trace.DebugAdd(u"");
        parts_.trace.DebugAdd(u"读入:", input);
        parts_.trace.DebugAdd(u"缓冲区:", parts_.rx_buffer.Waiting());
        if (!kept)
            parts_.trace.DebugAdd(u"缓冲区溢出");
    }
    if (!parts_.rx_buffer.HasLine())
        return;
    ProcessFirstLine();
    parts_.trace.DebugAdd(u"GetComStr=", parts_.answer.Answer());
}

void ResponseReader::DrainBacklog() {
    if (RxBusy_ || parts_.firmware.FirmMode())
        return;
    parts_.port.SetRThreshold(0);
    if (!parts_.rx_buffer.HasLine()) {
        ComBadTimer.Disable();
        parts_.port.SetRThreshold(1);
        return;
    }
    parts_.trace.DebugAdd(u"200毫秒自动处理过程开始");
    ProcessFirstLine();
    parts_.trace.DebugAdd(u"GetComStr=", parts_.answer.Answer());
    parts_.port.SetRThreshold(1);
}

void ResponseReader::ProcessFirstLine() {
    parts_.trace.DebugAdd(u"0d0a位置:", ToText(static_cast<long long>(parts_.rx_buffer.LineEnd())));
    const Text line = parts_.rx_buffer.TakeLine();
    parts_.trace.DebugAdd(u"剩余字符串:", parts_.rx_buffer.Waiting());
    parts_.trace.DebugAdd(u"---------------输出字符串:", line);
    if (parts_.rx_buffer.HasLine()) {
        parts_.port.SetRThreshold(0);
        ComBadTimer.Enable();
    }
    ProcessLine(line);
}

void ResponseReader::ProcessLine(const Text& line) {
    const ClassifiedLine classified = ClassifyLine(line);
    switch (classified.event) {
    case UnitEvent::kNone:
        if (line.size() >= kAnswerPrefix.size())
            parts_.answer.SetAnswer(StartsWith(line, kAnswerPrefix) ? line : Text());
        return;
    case UnitEvent::kSignal:
        Signal(line);
        break;
    case UnitEvent::kSendOK:
        parts_.trace.DebugAdd(u"SENDookk:", line);
        parts_.sms_result(u"SendOK");
        break;
    case UnitEvent::kSendFail:
        parts_.sms_result(u"SendFail");
        break;
    case UnitEvent::kState:
        PushState(classified.state_word);
        break;
    case UnitEvent::kReceivedSMS:
        SMSFifo_.Push(line);
        break;
    }
    parts_.answer.SetAnswer(u""); // an event never passes as an answer
}

void ResponseReader::Signal(const Text& line) {
    TarnexLostTimer.Disable();
    TarnexLostTimer.Enable(); // the count starts again
    if (const auto quality = SignalQuality(line)) {
        CSQ = *quality;
        parts_.trace.DebugAdd(u"CSQ=", ToText(CSQ));
    }
}

void ResponseReader::PushState(TextView word) {
    const bool no_card = word == u"NoCard";
    if (no_card && newest_is_unread_no_card_)
        return;
    StateFifo_.Push(Text(word));
    newest_is_unread_no_card_ = no_card;
}

Text ResponseReader::GetComFifo() {
    if (StateFifo_.Empty())
        return Text(kNoData);
    Text word = StateFifo_.Pop();
    if (StateFifo_.Empty())
        newest_is_unread_no_card_ = false;
    return word;
}

Text ResponseReader::GetSMSFifo() {
    return SMSFifo_.Empty() ? Text(kNoData) : SMSFifo_.Pop();
}

} // namespace tarnex
