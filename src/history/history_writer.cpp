#include "history/history_writer.h"

namespace tarnex {

namespace {

constexpr std::size_t kMostAtOnce = 200;
constexpr std::size_t kMostPending = 1000;

} // namespace

const char* FateWord(Fate fate) {
    switch (fate) {
    case Fate::kSent:
        return "sent";
    case Fate::kGivenUp:
        return "given up";
    case Fate::kHeldBack:
        return "held back";
    case Fate::kPushedOut:
        return "pushed out";
    case Fate::kDropped:
        return "dropped";
    case Fate::kLost:
        return "lost";
    }
    return "";
}

bool MaybeSent(const HistoryRow& row) {
    return (!row.attempts.empty() && row.attempts.back() != '\n') ||
           row.attempts.find(" SendLost\n") != row.attempts.npos;
}

std::int64_t HistoryWriter::Now() const {
    return std::chrono::floor<Duration>(clock_.WallNow().time_since_epoch()).count();
}

void HistoryWriter::Put(HistoryChange change) {
    if (pending_.size() == kMostPending)
        pending_.erase(pending_.begin());
    pending_.push_back(std::move(change));
    if (pending_.size() == kMostAtOnce)
        Flush();
    else if (!std::exchange(call_pending_, true))
        call_ = clock_.CallAfter(0ms, [this] { Flush(); });
}

void HistoryWriter::Flush() {
    clock_.Cancel(call_);
    call_pending_ = false;
    if (pending_.empty())
        return;
    const std::string trouble = history_.Store(pending_);
    if (trouble.empty())
        pending_.clear();
    notices_.Report("history",
                    trouble.empty() ? ""
                                    : trouble + " SMS and mails are sent all the same, but what "
                                                "becomes of them is not recorded.",
                    "The history works again.");
}

} // namespace tarnex
