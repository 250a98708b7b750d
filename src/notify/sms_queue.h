#pragma once

#include "device/sms_modem.h"
#include "events/notification_plan.h"
#include "logging/debug_lists.h"
#include "notify/message_observer.h"
#include "notify/unit_state.h"
#include "platform/ring_fifo.h"
#include "platform/timer.h"

#include <functional>

namespace tarnex {

// How often an entry is tried before it is given up.
inline constexpr int kSendErrorLimit = 4;

// Every SMS leaves through this queue: one at a time is handed to the unit, asked after until the
// unit knows its fate, and tried again until it was sent or has failed too often.
//
//   mSMSSendTimer --taken by the unit--> mSMSSendChkTimer --sent, failed or lost--> mSMSSendTimer
//        ^--queue empty, or refused--'        ^--still under way--'
//
// An entry is one recipient character, "1" or "2" for the first or second configured number, and
// the text.
class SMSQueue {
  public:
    struct Parts {
        Clock& clock;
        UnitState& unit;
        SMSSender& sender;
        DebugLists& lists;
        MessageObserver& messages;
        std::function<bool()> may_send; // false: entries wait
        // Starts the whole service over with the unit; calls Reset().
        std::function<void()> reset_unit_state;
        // Called before the next entry is taken, with the unit ready; it may queue some. May be
        // empty.
        std::function<void()> before_next{};
    };
    // Since the start of the program.
    struct Counts {
        unsigned long Sent = 0;
        unsigned long Refused = 0;        // attempts that the unit did not take
        unsigned long Failed = 0;         // attempts that the unit reported as failed
        unsigned long Lost = 0;           // attempts that the unit never reported on
        unsigned long GivenUp = 0;        // entries dropped after too many attempts
        unsigned long PushedOut = 0;      // entries dropped by a full queue
        unsigned long DroppedByReset = 0; // entries that waited, or were being sent, at a reset
        friend bool operator==(const Counts&, const Counts&) = default;
    };

    // The parts must outlive the queue.
    explicit SMSQueue(Parts parts);

    // What starting over with the unit does: empties the queue, and stops both timers until the
    // unit is ready.
    void Reset();
    void QueueSMS(const Text& entry, const MessageOrigin& origin = {});
    // Queues a fixed text for the first number, to try the way out.
    void mCmdSend_Click();

    // Entries that wait, without the held one.
    std::size_t Length() const { return SMSFifo_.Size(); }
    // The entry that is being sent or will be tried again; empty when there is none.
    const Text& HeldEntry() const { return held_.entry; }
    // Which attempt the held entry is at, from 1.
    int Attempt() const { return SendErrorCount_ + 1; }
    // What the unit said last about an SMS, other than that it is under way; empty before.
    const Text& LastResult() const { return last_result_; }
    const Counts& Totals() const { return totals_; }

    // 8 s; the first tick after a reset comes 3 s after it is enabled, when the unit is ready.
    Timer mSMSSendTimer;
    // 3 s; runs while the unit has an SMS under way.
    Timer mSMSSendChkTimer;

  private:
    Task<> mSMSSendTimer_Timer();
    void mSMSSendChkTimer_Timer();
    void ClearSMSFifo();
    void TakeNextEntry();
    void HandedOver();
    void NotTaken(const Text& answer);
    void Sent();
    void NotSent(const Text& answer);
    void CountSendError(bool succeeded);
    void EndHeld(Fate fate);
    void Log(const Text& line) { parts_.lists.mList4Additem(line); }

    Parts parts_;
    struct Waiting {
        Text entry;
        MessageId id = 0;
    };
    RingFifo<kSMSFifoSize + 1, Waiting> SMSFifo_;
    Waiting held_;           // its id is 0 when there is none
    int SendErrorCount_ = 0; // of the held entry
    Text last_result_;
    Counts totals_;
};

} // namespace tarnex
