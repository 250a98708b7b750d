#include "device/command_sender.h"

#include "device/answer_rules.h"

namespace tarnex {

namespace {

constexpr Duration kPauseBeforeCommand = 10ms;
constexpr Duration kAdapterLimit = 100ms; // a short command in the buffer of a USB adapter
constexpr std::size_t kAnswerPrefix = 3;  // "TX:"

Text Frame(TextView command) {
    return Text(u"~TX:").append(command).append(u"\r\n");
}

} // namespace

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
    if (answer.size() < kAnswerPrefix)
        co_return Text(kFailed);
    co_return answer.substr(kAnswerPrefix);
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
