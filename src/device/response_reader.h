#pragma once

#include "device/command_sender.h"
#include "device/firmware_link.h"
#include "device/unit_events.h"
#include "platform/ring_fifo.h"

namespace tarnex {

// Collects what the unit sends, cuts it into lines and sorts them into events and answers: the
// first line of a chunk 20 ms after it began to arrive, lines that came together one each 200 ms.
class ResponseReader {
  public:
    struct Parts {
        Clock& clock;
        CommPort& port;
        FirmwareLink& firmware;
        LineBuffer& rx_buffer;
        AnswerWait& answer;
        DeviceTrace& trace;
        DebugLists& lists;
        // The unit told the outcome of the running SMS: "SendOK" or "SendFail".
        std::function<void(TextView)> sms_result;
    };
    // The parts must outlive the reader.
    explicit ResponseReader(Parts parts);

    // The port's receive event; it belongs to the firmware link while that is in firmware mode.
    void MSComm1_OnComm();

    // The oldest state word, or kNoData. At most 30 wait; the oldest is dropped.
    Text GetComFifo();
    // The oldest received SMS record, or kNoData. At most 10 wait; the oldest is dropped.
    Text GetSMSFifo();

    // Last reported signal quality; -1 when the unit was silent for 60 s, 0 before the first
    // report.
    std::int16_t CSQ = 0;

    // Empties queues and buffers, ends a running receive event and stops the loss watch.
    void Init();

    Timer ComBadTimer;
    Timer TarnexLostTimer;

  private:
    Task<> Receive();
    void TakeInput();
    void DrainBacklog();
    void ProcessFirstLine();
    // Sets Answer, or does what the event asks for.
    void ProcessLine(const Text& line);
    void Signal(const Text& line);
    void PushState(TextView word);

    Parts parts_;
    bool RxBusy_ = false;
    Task<> receiving_;
    RingFifo<31> StateFifo_;
    bool newest_is_unread_no_card_ = false;
    RingFifo<11> SMSFifo_;
};

} // namespace tarnex
