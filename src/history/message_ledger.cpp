#include "history/message_ledger.h"

namespace tarnex {

HistoryRow MessageLedger::NewRow(const NewMessage& message) {
    ++messages_;
    return {.id = std::int64_t(++last_),
            .at = writer_.Now(),
            .kind = message.way == MessageWay::kSMS ? "SMS" : "mail",
            .recipient = ToUtf8(recipient_of_(message.way, message.number)),
            .number = ToUtf8(message.number),
            .text = ToUtf8(message.text),
            .record = ToUtf8(message.origin.record),
            .again_of = std::int64_t(message.origin.again_of),
            .maybe_sent = message.origin.maybe_sent};
}

MessageId MessageLedger::Queued(const NewMessage& message) {
    writer_.Put(NewRow(message));
    waiting_.emplace(last_, LedgerEntry{.way = message.way,
                                        .number = Text(message.number),
                                        .text = Text(message.text),
                                        .origin = message.origin});
    return last_;
}

void MessageLedger::HeldBack(const NewMessage& message, TextView reason) {
    HistoryRow row = NewRow(message);
    row.fate = FateWord(Fate::kHeldBack);
    row.reason = ToUtf8(reason);
    row.ended = row.at;
    writer_.Put(std::move(row));
    ++fates_[std::size_t(Fate::kHeldBack)];
}

void MessageLedger::Attempting(MessageId id) {
    const auto entry = waiting_.find(id);
    if (entry == waiting_.end())
        return;
    entry->second.attempt_open = true;
    writer_.Put(
        HistoryAttempt{.id = std::int64_t(id), .text = std::to_string(writer_.Now()) + " "});
}

void MessageLedger::Attempted(MessageId id, TextView result) {
    const auto entry = waiting_.find(id);
    if (entry == waiting_.end())
        return;
    const bool begun = std::exchange(entry->second.attempt_open, false);
    entry->second.results.emplace_back(result);
    writer_.Put(HistoryAttempt{.id = std::int64_t(id),
                               .text = (begun ? "" : std::to_string(writer_.Now()) + " ") +
                                       ToUtf8(result) + "\n"});
}

void MessageLedger::Ended(MessageId id, Fate fate) {
    const auto ended = waiting_.extract(id);
    if (ended.empty())
        return;
    ++fates_[std::size_t(fate)];
    writer_.Put(HistoryEnd{.id = std::int64_t(id), .fate = FateWord(fate), .at = writer_.Now()});
    for (const FateListener& listener : listeners_)
        listener(id, ended.mapped(), fate);
}

void MessageLedger::EndAll(Fate fate) {
    while (!waiting_.empty())
        Ended(waiting_.begin()->first, fate);
}

// In the row of one, which is the sign for all.
void MessageLedger::StillWaiting() {
    if (!waiting_.empty())
        writer_.Put(HistoryEnd{
            .id = std::int64_t(waiting_.begin()->first), .fate = "", .at = writer_.Now()});
}

void MessageLedger::Note(const std::string& kind, const std::string& text) {
    writer_.Put(
        HistoryRow{.id = std::int64_t(++last_), .at = writer_.Now(), .kind = kind, .text = text});
}

} // namespace tarnex
