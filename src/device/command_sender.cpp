#include "device/command_sender.h"

namespace tarnex {

namespace {

constexpr Duration kPauseBeforeCommand = 10ms;
constexpr Duration kAdapterLimit = 100ms; // a short command in the buffer of a USB adapter
constexpr std::size_t kPrefixLength = 3;  // "TX:"

Text Frame(TextView command) {
    return Text(u"~TX:").append(command).append(u"\r\n");
}

// -1 for a character that is no hexadecimal digit.
int HexDigit(char16_t c) {
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'A' && c <= u'F')
        return c - u'A' + 10;
    if (c >= u'a' && c <= u'f')
        return c - u'a' + 10;
    return -1;
}

} // namespace

// ---- what an answer says

Text CheckOK(TextView answer) {
    return Text(StartsWith(answer, kOk) ? kOk : kFailed);
}

Text CutAnswer(TextView answer, TextView prefix) {
    if (answer.size() <= prefix.size() || !StartsWith(answer, prefix))
        return Text(kFailed);
    return Text(answer.substr(prefix.size(), answer.size() - prefix.size() - 1));
}

Text HexEncode(TextView text) {
    Text hex;
    hex.reserve(text.size() * 4);
    for (const char16_t character : text) {
        Text digits;
        for (unsigned code = character; code != 0 || digits.empty(); code /= 16)
            digits.insert(digits.begin(), u"0123456789ABCDEF"[code % 16]);
        if (digits.size() == 2)
            hex += u"00";
        hex += digits;
    }
    return hex;
}

Text HexDecode(TextView hex) {
    Text text;
    text.reserve(hex.size() / 4 + 1);
    for (std::size_t at = 0; at < hex.size(); at += 4) {
        int code = 0;
        for (const char16_t c : hex.substr(at, 4)) {
            const int digit = HexDigit(c);
            code = code < 0 || digit < 0 ? -1 : code * 16 + digit;
        }
        if (code >= 0)
            text += static_cast<char16_t>(code);
    }
    return text;
}

// ---- the wait for an answer

AnswerWait::AnswerWait(Clock& clock)
    : ComTimer(clock, 0ms,
               [this] {
                   TimedOut_ = true;
                   ComTimer.Disable();
                   changed_.Notify();
               }),
      changed_(clock) {}

void AnswerWait::SetAnswer(Text answer) {
    answer_ = std::move(answer);
    if (answer_.empty())
        return;
    for (Pending* pending : pending_)
        if (pending->answer.empty())
            pending->answer = answer_;
    changed_.Notify();
}

Task<Text> AnswerWait::Wait(std::chrono::seconds limit) {
    struct Entry : Pending {
        explicit Entry(std::list<Pending*>& all) : all_(all) { all_.push_back(this); }
        Entry(const Entry&) = delete;
        ~Entry() { all_.remove(this); }
        std::list<Pending*>& all_;
    } entry(pending_);

    while (entry.answer.empty() && !entry.ended && !AnswerTimeout(limit))
        co_await changed_.Wait();
    AnswerTimeout(0s);
    co_return std::move(entry.answer);
}

void AnswerWait::EndWaits() {
    for (Pending* pending : pending_)
        pending->ended = true;
    changed_.Notify();
}

bool AnswerWait::AnswerTimeout(std::chrono::seconds limit) {
    if (limit == 0s) {
        ComTimer.Disable();
        TimerRunning_ = false;
        changed_.Notify(); // whoever still waits arms it again
        return false;
    }
    if (!TimerRunning_) {
        TimerRunning_ = true;
        TimedOut_ = false;
        ComTimer.Disable();
        ComTimer.SetInterval(limit);
        ComTimer.Enable();
        return false;
    }
    if (!TimedOut_)
        return false;
    TimerRunning_ = false;
    return true;
}

// ---- commands

Task<Text> CommandSender::SendCommand(Text command) {
    co_await Sleep(parts_.clock, kPauseBeforeCommand);
    parts_.answer.SetAnswer(u"");
    parts_.rx_buffer.Clear();
    parts_.port.DropHalfCharacter(); // it would take the answer's first letter
    const Text frame = Frame(command);
    parts_.trace.DebugAdd(u"********************");
    parts_.trace.DebugAdd(u"发送:", frame);
    const PortStatus written = parts_.port.Output(frame);
    if (written == PortStatus::kLost) {
        parts_.trace.DebugAdd(u"sendtocom8021错误导致硬件丢失");
        parts_.hardware_lost();
        co_return Text(kFailed);
    }
    if (written != PortStatus::kOk)
        co_return Text();
    parts_.lists.List2Additem(u"Send:" + frame);
    Text answer = co_await parts_.answer.Wait(AnswerWaitTime);
    if (answer.size() < kPrefixLength)
        co_return Text(kFailed);
    co_return answer.substr(kPrefixLength);
}

Task<> CommandSender::RawCommandLeft() {
    co_await parts_.port.OutputLeft();
    co_await Sleep(parts_.clock, kAdapterLimit);
}

Task<bool> CommandSender::SendRaw(Text command) {
    const bool free = co_await parts_.port.OutputLeft();
    co_return free&& parts_.port.Output(Frame(command)) == PortStatus::kOk;
}

} // namespace tarnex
