#pragma once

#include "device/answer_wait.h"
#include "device/comm_port.h"
#include "device/device_trace.h"
#include "device/line_buffer.h"

namespace tarnex {

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
