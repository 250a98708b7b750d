#pragma once

#include "device/comm_port.h"
#include "platform/timer.h"

#include <list>

namespace tarnex {

// The fixed words with which the device link tells outcomes.
inline constexpr TextView kOk = u"OK";
inline constexpr TextView kFailed = u"Failed"; // no answer in time, or a wrong one
inline constexpr TextView kNoData = u"NoData"; // a queue is empty

// kOk when the answer begins with "OK", else kFailed.
Text CheckOK(TextView answer);

// NO1(12345), cut by "NO1(", is 12345: the answer without the prefix and without its last
// character. kFailed when it does not begin with the prefix or has nothing behind it.
Text CutAnswer(TextView answer, TextView prefix);

// Text as the unit stores it: four hexadecimal digits a character. Codes below 16 and from 256 to
// 4095 come out as one and three digits: the unit's own format.
Text HexEncode(TextView text);
// Back again, in groups of four; a group that is not hexadecimal adds nothing, a short last group
// counts as it stands.
Text HexDecode(TextView hex);

// The answer slot and the wait for it. Commands that wait at the same time share both: each takes
// the first answer that comes, and they share one time-out, which each renews in its turn.
class AnswerWait {
  public:
    explicit AnswerWait(Clock& clock);

    // The last line of the unit that begins with "TX:" and was no event.
    const Text& Answer() const { return answer_; }
    // A non-empty answer goes to every waiting command at this moment.
    void SetAnswer(Text answer);

    // Waits for an answer; "" when none came within limit, or the waits were ended.
    Task<Text> Wait(std::chrono::seconds limit);
    // Every wait ends with "" now.
    void EndWaits();

    Timer ComTimer;

  private:
    struct Pending {
        Text answer;
        bool ended = false;
    };

    // Arms the shared time-out, or tells, once, that it has passed; 0 stops it.
    bool AnswerTimeout(std::chrono::seconds limit);

    Text answer_;
    bool TimedOut_ = false;
    bool TimerRunning_ = false;
    std::list<Pending*> pending_;
    Signal changed_;
};

// Frames commands, writes them to the port and waits for their answers.
class CommandSender {
  public:
    struct Parts {
        Clock& clock;
        CommPort& port;
        LineBuffer& rx_buffer;
        AnswerWait& answer;
        DeviceTrace& trace;
        DebugLists& lists;
        std::function<void()> hardware_lost;
    };
    // The parts must outlive the sender.
    explicit CommandSender(Parts parts) : parts_(std::move(parts)) {}

    // How long later commands wait for their answers.
    std::chrono::seconds AnswerWaitTime = kHelloWait;
    static constexpr std::chrono::seconds kHelloWait = 5s;    // until the unit has been greeted
    static constexpr std::chrono::seconds kCommandWait = 20s; // from then on

    // Sends "~TX:" + command and waits: the answer without its "TX:", kFailed when none came in
    // time or the hardware was lost (hardware_lost was called then), "" when no port is open.
    // What was half received before is thrown away.
    Task<Text> SendCommand(Text command);

    // Sends without a pause and without waiting for an answer, once everything written before has
    // left. False when it does not leave, or the hardware is lost or closed.
    Task<bool> SendRaw(Text command);
    // Waits until what SendRaw sent is on the line: the port can be closed then.
    Task<> RawCommandLeft();

  private:
    Parts parts_;
};

} // namespace tarnex
