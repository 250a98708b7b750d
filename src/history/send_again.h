#pragma once

#include "history/message_ledger.h"
#include "notify/dispatcher.h"
#include "notify/unit_state.h"

#include <deque>

namespace tarnex {

// Sends messages again that no attempt was left to: those that a new start with the unit dropped,
// or that were lost with the end of the service, within an hour and where the settings want it; and
// those that an operator names. A message that may have been sent is sent again once at most.
//
// An SMS that is given up when the unit takes none any more counts as dropped if the unit turns out
// to be lost before another SMS is sent.
class SendAgain {
  public:
    struct Parts {
        MessageLedger& ledger;
        HistoryWriter& writer;
        MessageHistory& history;
        const Settings& settings;
        const UnitState& unit;
        SMSQueue& queue;
        EmailFifo& mail;
        OperatorNotices::Sink say;
    };
    // The parts must outlive it.
    explicit SendAgain(Parts parts);

    // The service begins, with its settings loaded.
    void Start();
    // What waited when the service before ended without a word is lost, and an operator is told. To
    // be called until the history can be read; does nothing from then on.
    void LookBack();
    // The service ends: so is what waits now. Harmless before Start() and a second time.
    void Stop();
    // The SMS queue looks for its next entry: fills it, but for the room that new ones may need.
    void FillQueue();
    // How many SMS wait for that.
    std::size_t ToSend() const { return sms_.size(); }
    // For an operator: "resend 12 13" queues messages again by their ids, "resend" all that were
    // not sent, as far as there is room. The answer, a line each.
    std::string Answer(std::string_view request);

  private:
    struct Lost {
        MessageId id;
        MessageWay way;
        Text number;
        Text text;
        MessageOrigin origin; // of the message that sends it again
        std::int64_t at;
    };
    void OnFate(MessageId id, const LedgerEntry& entry, Fate fate);
    static Lost LostOf(const HistoryRow& row);
    void Take(Lost message);
    void TakeNotTaken();
    void Queue(const Lost& message);
    bool HasRoom(MessageWay way) const;
    std::vector<HistoryRow> Earlier(Result<std::vector<HistoryRow>> rows) const;
    void CloseLeftOver(const std::vector<HistoryRow>& rows);
    void TakeRecent();
    std::string Resend(const std::vector<std::int64_t>& ids);
    // "", or why it is not queued again.
    std::string QueueNamed(std::int64_t id);

    Parts parts_;
    bool started_ = false;
    bool looked_back_ = false;
    std::int64_t last_earlier_ = 0; // no row of the service before is behind it
    std::deque<Lost> sms_;          // oldest first
    // Given up, and no SMS was sent since.
    std::deque<Lost> not_taken_;
    unsigned losses_ = 0; // of the unit, when they were given up
};

} // namespace tarnex
