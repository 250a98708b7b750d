#include "operator/report_figures.h"

#include "history/history_writer.h"

#include <algorithm>
#include <sstream>

namespace tarnex {

namespace {

constexpr std::size_t kHeldBack = 1;
constexpr std::size_t kWaits = 6;
constexpr int kWeakSignal = 5; // below that
constexpr int kStrongest = 31; // what is above, such as 99, was no signal at all
constexpr std::int64_t kMinute = 60'000;
// While the unit is ready a row of its signal comes every 10 minutes.
constexpr std::int64_t kLongestSilence = 25 * kMinute;
constexpr std::int64_t kLongestStart = 2 * kMinute;

std::size_t FateOf(const HistoryRow& row) {
    const auto known = std::ranges::find(kReportedFates, row.fate);
    return known == kReportedFates.end() ? kWaits : std::size_t(known - kReportedFates.begin());
}

// How the unit was, told by rows that come in order.
class UnitTimeline {
  public:
    explicit UnitTimeline(ReportFigures& figures) : figures_(figures) {}

    void Row(const HistoryRow& row) {
        RunTo(row.at);
        state_ = row.kind == "signal" || row.text == "ready" ? State::kReady : State::kNotReady;
        last_row_ = row.at;
    }
    void End(std::int64_t at) {
        RunTo(at);
        std::erase_if(figures_.not_ready,
                      [](const ReportSpan& span) { return span.Length() <= kLongestStart; });
    }

  private:
    enum class State { kUnknown, kReady, kNotReady };

    void RunTo(std::int64_t at) {
        if (state_ == State::kReady && at - last_row_ > kLongestSilence)
            AddSpan(figures_.silent, at);
        else if (state_ != State::kUnknown)
            AddKnown(at);
        since_ = std::max(since_, at);
    }

    void AddKnown(std::int64_t at) {
        const std::int64_t begin = std::max(since_, figures_.edges.front());
        const auto& edges = figures_.edges;
        for (std::size_t i = 0; i < figures_.buckets.size(); ++i) {
            const std::int64_t part = std::min(at, edges[i + 1]) - std::max(begin, edges[i]);
            if (part <= 0)
                continue;
            for (ReportBucket* bucket : {&figures_.buckets[i], &figures_.total}) {
                bucket->known += part;
                bucket->ready += state_ == State::kReady ? part : 0;
            }
        }
        if (state_ == State::kNotReady)
            AddSpan(figures_.not_ready, at);
    }

    // One that begins where the last one ends goes on with it.
    void AddSpan(std::vector<ReportSpan>& spans, std::int64_t at) const {
        const std::int64_t begin = std::max(since_, figures_.edges.front());
        if (at <= begin)
            return;
        if (!spans.empty() && spans.back().end == begin)
            spans.back().end = at;
        else
            spans.push_back({begin, at});
    }

    ReportFigures& figures_;
    State state_ = State::kUnknown;
    std::int64_t since_ = 0;
    std::int64_t last_row_ = 0;
};

class Counter {
  public:
    explicit Counter(ReportFigures& figures) : figures_(figures), unit_(figures) {}

    void Row(const HistoryRow& row) {
        if (row.kind == "unit" || row.kind == "signal")
            unit_.Row(row);
        const auto& edges = figures_.edges;
        if (row.at < edges.front() || row.at >= edges.back())
            return;
        const auto after = std::ranges::upper_bound(edges, row.at);
        bucket_ = &figures_.buckets[std::size_t(after - edges.begin() - 1)];
        if (row.kind == "signal")
            Signal(int(std::strtol(row.text.c_str(), nullptr, 10)));
        else if (row.kind == "SMS" || row.kind == "mail")
            Message(row);
    }
    void End() { unit_.End(std::min(figures_.now, figures_.edges.back())); }

  private:
    void Signal(int reading) {
        const int signal = reading > kStrongest ? 0 : reading;
        figures_.weak_readings += signal < kWeakSignal;
        for (ReportBucket* bucket : {bucket_, &figures_.total}) {
            bucket->weakest = bucket->readings > 0 ? std::min(bucket->weakest, signal) : signal;
            bucket->strongest = std::max(bucket->strongest, signal);
            bucket->signal_sum += signal;
            ++bucket->readings;
        }
    }

    void Message(const HistoryRow& row) {
        // All messages of an alarm are queued at one instant.
        const bool alarm = !row.record.empty() && row.again_of == 0 &&
                           (row.at != alarm_at_ || row.record != alarm_);
        if (alarm) {
            alarm_at_ = row.at;
            alarm_ = row.record;
        }
        const std::size_t fate = FateOf(row);
        const bool last = row.again_as == 0;
        for (ReportBucket* bucket : {bucket_, &figures_.total}) {
            bucket->alarms += alarm;
            bucket->messages[std::size_t(OutcomeOf(fate))] += last;
        }
        Attempts(row);
        const auto before = queued_at_.find(row.again_of);
        const std::int64_t queued_at = before == queued_at_.end() ? row.at : before->second;
        if (!last) {
            queued_at_.emplace(row.id, queued_at);
            return;
        }
        ++figures_.fates[row.kind][fate];
        figures_.sent_again += row.again_of != 0;
        if (fate == kHeldBack)
            ++figures_.held_back[row.reason];
        if (fate == kWaits && figures_.waits_since == 0)
            figures_.waits_since = row.at;
        if (fate == 0 && row.kind == "SMS")
            figures_.sms_delays.push_back(row.ended - queued_at);
        if (OutcomeOf(fate) != Outcome::kNotSent)
            return;
        figures_.not_sent.push_back(row);
        figures_.maybe_sent += MaybeSent(row);
    }

    // What was answered to those that did not succeed.
    void Attempts(const HistoryRow& row) {
        std::istringstream lines(row.attempts);
        std::string before;
        for (std::string line; std::getline(lines, line); before = line)
            Refused(before);
        if (row.fate != "sent" && row.attempts.ends_with('\n'))
            Refused(before);
    }
    void Refused(const std::string& line) {
        if (const std::size_t blank = line.find(' '); blank != line.npos)
            ++figures_.refusals[line.substr(blank + 1)];
    }

    ReportFigures& figures_;
    UnitTimeline unit_;
    ReportBucket* bucket_ = nullptr;
    std::int64_t alarm_at_ = -1;
    std::string alarm_;
    std::map<std::int64_t, std::int64_t> queued_at_; // for the first time; what was sent again
};

} // namespace

Outcome OutcomeOf(std::size_t fate) {
    return fate == 0           ? Outcome::kSent
           : fate == kHeldBack ? Outcome::kHeldBack
           : fate == kWaits    ? Outcome::kWaits
                               : Outcome::kNotSent;
}

ReportFigures FiguresOf(const std::vector<HistoryRow>& rows, std::vector<std::int64_t> edges,
                        std::int64_t now) {
    ReportFigures figures;
    figures.buckets.resize(edges.size() - 1);
    figures.edges = std::move(edges);
    figures.now = now;
    for (std::size_t i = 0; i < figures.buckets.size(); ++i)
        figures.buckets[i].length = std::min(now, figures.edges[i + 1]) - figures.edges[i];
    Counter counter(figures);
    for (const HistoryRow& row : rows)
        counter.Row(row);
    counter.End();
    std::ranges::sort(figures.sms_delays);
    return figures;
}

} // namespace tarnex
