#pragma once

#include "history/history_writer.h"

#include <array>
#include <functional>
#include <map>
#include <vector>

namespace tarnex {

// A message that waits, or waited until just now.
struct LedgerEntry {
    MessageWay way = MessageWay::kSMS;
    Text number; // of an SMS: "1" or "2"
    Text text;
    MessageOrigin origin;
    std::vector<Text> results{}; // of its attempts, oldest first
    bool attempt_open = false;   // one is under way: it may have been sent
};

// Knows of every message what became of it, and puts it into the history: what was queued is what
// waits and what has a fate.
class MessageLedger : public MessageObserver {
  public:
    // To whom a message goes: a telephone number or an address.
    using RecipientOf = std::function<Text(MessageWay way, TextView number)>;
    using FateListener = std::function<void(MessageId, const LedgerEntry&, Fate)>;

    // The writer must outlive the ledger.
    MessageLedger(HistoryWriter& writer, RecipientOf recipient_of)
        : writer_(writer), recipient_of_(std::move(recipient_of)) {}

    // The messages to come are named from there on.
    void CountFrom(MessageId last) { last_ = last; }
    MessageId Queued(const NewMessage& message) override;
    void HeldBack(const NewMessage& message, TextView reason) override;
    void Attempting(MessageId id) override;
    void Attempted(MessageId id, TextView result) override;
    void Ended(MessageId id, Fate fate) override;
    // Of everything that waits.
    void EndAll(Fate fate);
    // For a start after a crash: messages wait still. To be called now and then.
    void StillWaiting();
    // A row that is no message.
    void Note(const std::string& kind, const std::string& text);

    // Is told of every fate but kHeldBack from now on, from within the queues.
    void OnFate(FateListener listener) { listeners_.push_back(std::move(listener)); }

    // Since the start of the program; what was held back is among them.
    unsigned long Messages() const { return messages_; }
    unsigned long Count(Fate fate) const { return fates_[std::size_t(fate)]; }
    const std::map<MessageId, LedgerEntry>& Waiting() const { return waiting_; }

  private:
    HistoryRow NewRow(const NewMessage& message);

    HistoryWriter& writer_;
    RecipientOf recipient_of_;
    std::map<MessageId, LedgerEntry> waiting_;
    MessageId last_ = 0;
    unsigned long messages_ = 0;
    std::array<unsigned long, kFates> fates_{};
    std::vector<FateListener> listeners_;
};

} // namespace tarnex
