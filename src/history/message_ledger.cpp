#include "history/message_ledger.h"

namespace tarnex {

MessageId MessageLedger::Queued(const NewMessage& message) {
    ++messages_;
    waiting_.emplace(++last_, LedgerEntry{.way = message.way,
                                          .number = Text(message.number),
                                          .text = Text(message.text),
                                          .origin = message.origin});
    return last_;
}

void MessageLedger::HeldBack(const NewMessage&, TextView) {
    ++messages_;
    ++last_;
    ++fates_[std::size_t(Fate::kHeldBack)];
}

void MessageLedger::Attempting(MessageId id) {
    if (const auto entry = waiting_.find(id); entry != waiting_.end())
        entry->second.attempt_open = true;
}

void MessageLedger::Attempted(MessageId id, TextView result) {
    const auto entry = waiting_.find(id);
    if (entry == waiting_.end())
        return;
    entry->second.attempt_open = false;
    entry->second.results.emplace_back(result);
}

void MessageLedger::Ended(MessageId id, Fate fate) {
    const auto ended = waiting_.extract(id);
    if (ended.empty())
        return;
    ++fates_[std::size_t(fate)];
    for (const FateListener& listener : listeners_)
        listener(id, ended.mapped(), fate);
}

} // namespace tarnex
