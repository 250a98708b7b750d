#include "history/send_again.h"

#include <algorithm>
#include <charconv>

namespace tarnex {

namespace {

constexpr std::int64_t kNotOlder = std::chrono::milliseconds(1h).count();
constexpr std::size_t kMostSMS = 2 * kSMSFifoSize; // that wait for room or the unit; the newest
// No more wait in the queues because of it, so that new ones find room there.
constexpr std::size_t kMostQueuedSMS = kSMSFifoSize * 3 / 4;
constexpr std::ptrdiff_t kMostQueuedMails = 300; // of 400
constexpr const char* kNoRoom = "stays as it is: the rest of the queue is for new messages";
// That a start looks through: what full queues have lost stands between what they have pushed out.
constexpr int kMostRows = 2000;
constexpr int kMostUnsent = 600;         // that are queued again without being named
constexpr std::size_t kMostNamed = 1000; // at a time: the loop waits meanwhile
constexpr const char* kHowToSee = "tarnexctl history --unsent";

// "3 SMS and 1 mail"; "" for none.
std::string Messages(long sms, long mails) {
    const std::string mail_part =
        mails == 0 ? "" : std::to_string(mails) + (mails == 1 ? " mail" : " mails");
    if (sms == 0)
        return mail_part;
    return std::to_string(sms) + " SMS" + (mails == 0 ? "" : " and " + mail_part);
}

bool MaybeSent(const LedgerEntry& entry) {
    return entry.attempt_open || std::ranges::count(entry.results, u"SendLost") > 0;
}

} // namespace

SendAgain::SendAgain(Parts parts) : parts_(std::move(parts)) {
    parts_.ledger.OnFate([this](MessageId id, const LedgerEntry& entry, Fate fate) {
        // Mails that are dropped were dropped by hand.
        if (entry.way == MessageWay::kSMS && parts_.settings.SendAgain)
            OnFate(id, entry, fate);
    });
}

void SendAgain::OnFate(MessageId id, const LedgerEntry& entry, Fate fate) {
    Lost message{.id = id,
                 .way = entry.way,
                 .number = entry.number,
                 .text = entry.text,
                 .origin = {.record = entry.origin.record,
                            .again_of = id,
                            .maybe_sent = entry.origin.maybe_sent + MaybeSent(entry)},
                 .at = parts_.writer.Now()};
    if (fate == Fate::kSent) {
        not_taken_.clear();
    } else if (fate == Fate::kGivenUp && entry.results.back() == kFailed) {
        losses_ = parts_.unit.Losses();
        not_taken_.push_back(std::move(message));
    } else if (fate == Fate::kDropped) {
        TakeNotTaken();
        Take(std::move(message));
    }
}

void SendAgain::TakeNotTaken() {
    if (losses_ == parts_.unit.Losses())
        return;
    for (Lost& message : not_taken_)
        Take(std::move(message));
    not_taken_.clear();
}

SendAgain::Lost SendAgain::LostOf(const HistoryRow& row) {
    const auto id = MessageId(row.id);
    return {.id = id,
            .way = row.kind == "mail" ? MessageWay::kMail : MessageWay::kSMS,
            .number = FromUtf8(row.number),
            .text = FromUtf8(row.text),
            .origin = {.record = FromUtf8(row.record),
                       .again_of = id,
                       .maybe_sent = int(row.maybe_sent) + MaybeSent(row)},
            .at = row.ended};
}

void SendAgain::Take(Lost message) {
    if (message.origin.maybe_sent > 1)
        return;
    if (message.way == MessageWay::kMail) {
        Queue(message);
        return;
    }
    if (sms_.size() == kMostSMS)
        sms_.pop_front();
    sms_.push_back(std::move(message));
}

void SendAgain::Queue(const Lost& message) {
    if (message.way == MessageWay::kMail)
        parts_.mail.dSetEmailFifo(message.text, message.origin);
    else
        parts_.queue.QueueSMS(message.number + message.text, message.origin);
}

bool SendAgain::HasRoom(MessageWay way) const {
    if (way == MessageWay::kSMS)
        return parts_.queue.Length() < kMostQueuedSMS;
    const auto is_mail = [](const auto& each) { return each.second.way == MessageWay::kMail; };
    return std::ranges::count_if(parts_.ledger.Waiting(), is_mail) < kMostQueuedMails;
}

void SendAgain::FillQueue() {
    TakeNotTaken();
    if (!parts_.settings.SendAgain)
        sms_.clear();
    while (!sms_.empty() && HasRoom(MessageWay::kSMS)) {
        const Lost message = std::move(sms_.front());
        sms_.pop_front();
        if (parts_.writer.Now() - message.at <= kNotOlder)
            Queue(message);
    }
}

void SendAgain::Start() {
    started_ = true;
    auto newest = parts_.history.Rows({.last = 1});
    if (!newest) // the ids in use are not known: the time is none of them
        last_earlier_ = parts_.writer.Now();
    else if (!(*newest).empty())
        last_earlier_ = (*newest).back().id;
    parts_.ledger.CountFrom(MessageId(last_earlier_));
    LookBack();
}

void SendAgain::LookBack() {
    if (!started_ || looked_back_)
        return;
    auto waiting = parts_.history.Rows({.waiting = true});
    if (!waiting)
        return;
    looked_back_ = true;
    CloseLeftOver(Earlier(std::move(waiting)));
    if (parts_.settings.SendAgain)
        TakeRecent();
}

// Without the rows since this start.
std::vector<HistoryRow> SendAgain::Earlier(Result<std::vector<HistoryRow>> rows) const {
    if (!rows)
        return {};
    std::erase_if(*rows, [this](const HistoryRow& row) { return row.id > last_earlier_; });
    return std::move(*rows);
}

void SendAgain::CloseLeftOver(const std::vector<HistoryRow>& rows) {
    if (rows.empty())
        return;
    std::int64_t last_sign = 0; // of the service that ended
    for (const HistoryRow& newest : Earlier(parts_.history.Rows({.last = 1})))
        last_sign = newest.at;
    for (const HistoryRow& row : rows)
        last_sign = std::max({last_sign, row.at, row.ended});
    for (const HistoryRow& row : rows)
        parts_.writer.Put(HistoryEnd{.id = row.id, .fate = FateWord(Fate::kLost), .at = last_sign});
    parts_.writer.Flush();
    const auto sms = std::ranges::count(rows, "SMS", &HistoryRow::kind);
    const bool one = rows.size() == 1;
    parts_.say(NoticeLevel::kWarning,
               Messages(sms, long(rows.size()) - sms) + " that waited when the service ended " +
                   (one ? "was" : "were") + " not sent" +
                   (parts_.settings.SendAgain ? std::string(", and ") + (one ? "is" : "are") +
                                                    " sent again if that was within an hour"
                                              : "") +
                   ": " + kHowToSee);
}

// A clock that has lost its time would make all that was ever lost recent: the newest row counts
// too.
void SendAgain::TakeRecent() {
    std::int64_t now = parts_.writer.Now();
    for (const HistoryRow& newest : Earlier(parts_.history.Rows({.last = 1})))
        now = std::max(now, newest.at);
    for (const HistoryRow& row :
         Earlier(parts_.history.Rows({.not_sent = true, .last = kMostRows}))) {
        const bool lost = row.fate == FateWord(Fate::kLost) ||
                          (row.fate == FateWord(Fate::kDropped) && row.kind == "SMS");
        if (lost && std::abs(now - row.ended) <= kNotOlder)
            Take(LostOf(row));
    }
}

void SendAgain::Stop() {
    if (!std::exchange(started_, false))
        return;
    const auto& waiting = parts_.ledger.Waiting();
    const auto sms = std::ranges::count_if(
        waiting, [](const auto& each) { return each.second.way == MessageWay::kSMS; });
    const bool one = waiting.size() == 1;
    if (!waiting.empty())
        parts_.say(NoticeLevel::kWarning,
                   Messages(sms, long(waiting.size()) - sms) +
                       (one ? " waits and is" : " wait and are") + " not sent: the service ends" +
                       (parts_.settings.SendAgain ? std::string(". A start within an hour sends ") +
                                                        (one ? "it" : "them") + " again"
                                                  : "") +
                       ": " + kHowToSee);
    parts_.ledger.EndAll(Fate::kLost);
    parts_.writer.Flush();
}

std::string SendAgain::QueueNamed(std::int64_t id) {
    auto rows = parts_.history.Rows({.id = id});
    if (!rows)
        return "stays as it is. " + rows.TroubleText();
    if ((*rows).empty() || ((*rows)[0].kind != "SMS" && (*rows)[0].kind != "mail"))
        return "is no message of the history";
    const HistoryRow& row = (*rows)[0];
    if (row.fate.empty())
        return "waits to be sent";
    if (row.again_as != 0)
        return "was sent again as " + std::to_string(row.again_as);
    Lost message = LostOf(row);
    if (!HasRoom(message.way))
        return kNoRoom;
    std::erase_if(sms_, [id](const Lost& lost) { return std::int64_t(lost.id) == id; });
    message.origin.maybe_sent = 0; // somebody has decided it
    Queue(message);
    parts_.writer.Flush();
    return "";
}

std::string SendAgain::Answer(std::string_view request) {
    constexpr std::string_view kResend = "resend";
    if (!request.starts_with(kResend))
        return "the service does not know this request\n";
    std::vector<std::int64_t> ids;
    const char* at = request.data() + kResend.size();
    const char* const end = request.data() + request.size();
    while (at != end) {
        std::int64_t id = 0;
        const auto read = std::from_chars(at + 1, end, id); // behind a blank
        if (read.ec != std::errc())
            return "the service does not know this request\n";
        ids.push_back(id);
        at = read.ptr;
    }
    if (ids.size() > kMostNamed)
        return "too many messages at a time\n";
    return Resend(ids);
}

std::string SendAgain::Resend(const std::vector<std::int64_t>& ids) {
    parts_.writer.Flush();
    LookBack();
    std::vector<std::int64_t> wanted = ids;
    if (wanted.empty()) {
        auto rows = parts_.history.Rows({.not_sent = true, .last = kMostUnsent});
        if (!rows)
            return rows.TroubleText() + "\n";
        for (const HistoryRow& row : *rows)
            wanted.push_back(row.id);
    }
    std::string answer;
    int left = 0;
    for (const std::int64_t id : wanted) {
        const std::string why_not = QueueNamed(id);
        if (ids.empty() && why_not == kNoRoom)
            ++left;
        else
            answer +=
                std::to_string(id) + " " + (why_not.empty() ? "is queued again" : why_not) + "\n";
    }
    if (left > 0)
        answer += std::to_string(left) + (wanted.size() == kMostUnsent ? " or more" : "") +
                  " stay as they are: the rest of the queue is for new messages. Ask again when "
                  "these are sent\n";
    return answer.empty() ? "nothing is left that was not sent\n" : answer;
}

} // namespace tarnex
