#pragma once

#include "logging/operator_notices.h"
#include "notify/message_observer.h"
#include "platform/clock.h"
#include "platform/message_history.h"

namespace tarnex {

// "sent", "given up", "held back", "pushed out", "dropped", "lost"
const char* FateWord(Fate fate);
// Whether an attempt to send the message may have succeeded without an answer.
bool MaybeSent(const HistoryRow& row);

// Puts changes into the history, those of one turn of the loop together. A history that fails costs
// no more than itself: the last 1000 changes are kept until it works again, and an operator is told
// under the topic "history".
class HistoryWriter {
  public:
    // All must outlive the writer.
    HistoryWriter(Clock& clock, MessageHistory& history, OperatorNotices& notices)
        : clock_(clock), history_(history), notices_(notices) {}
    HistoryWriter(const HistoryWriter&) = delete;
    HistoryWriter& operator=(const HistoryWriter&) = delete;
    ~HistoryWriter() { clock_.Cancel(call_); }

    void Put(HistoryChange change);
    // Stores what was put now.
    void Flush();
    // The present time as the history has it.
    std::int64_t Now() const;

  private:
    Clock& clock_;
    MessageHistory& history_;
    OperatorNotices& notices_;
    std::vector<HistoryChange> pending_;
    bool call_pending_ = false;
    CallId call_;
};

} // namespace tarnex
