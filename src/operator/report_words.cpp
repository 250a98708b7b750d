#include "operator/report_words.h"

#include "logging/main_job_notices.h"
#include "operator/moment.h"
#include "operator/text_output.h"

#include <algorithm>
#include <numeric>

namespace tarnex {

namespace {

constexpr std::int64_t kWaitUnmentioned = 10 * 60'000; // ms that a message may wait unmentioned
constexpr std::size_t kMostNamed = 3;

std::string Age(std::int64_t ms) {
    return AgeText(ms / 1000);
}

std::int64_t LengthOf(const std::vector<ReportSpan>& spans) {
    return std::accumulate(spans.begin(), spans.end(), std::int64_t{0},
                           [](auto sum, const ReportSpan& span) { return sum + span.Length(); });
}

// "3 times, 2 h 5 min in all, the longest from 2024-05-06 22:30 for 2 h"; once: "for 2 h from ..."
std::string SpansText(const OperatorWorld& world, const std::vector<ReportSpan>& spans) {
    const auto longest = std::ranges::max_element(spans, {}, &ReportSpan::Length);
    const std::string from = "from " + MinuteText(world, longest->begin);
    if (spans.size() == 1)
        return "for " + Age(longest->Length()) + " " + from;
    return std::to_string(spans.size()) + " times, " + Age(LengthOf(spans)) +
           " in all; the longest time was " + Age(longest->Length()) + " " + from;
}

// "8 × quiet time, 4 × no card": the most frequent ones.
std::string MostOf(const std::map<std::string, int>& counts) {
    std::vector<std::pair<std::string, int>> sorted(counts.begin(), counts.end());
    std::ranges::stable_sort(sorted, std::ranges::greater(), &std::pair<std::string, int>::second);
    std::vector<std::string> named;
    for (const auto& [text, count] : sorted)
        if (named.size() < kMostNamed)
            named.push_back(std::to_string(count) + " × " + text);
    if (sorted.size() > named.size())
        named.push_back(std::to_string(sorted.size() - named.size()) + " more");
    return Joined(named, ", ");
}

int CountOf(const ReportFigures& figures, Outcome outcome) {
    return figures.total.messages[std::size_t(outcome)];
}

std::string NotSentText(const ReportFigures& figures) {
    std::vector<std::string> parts;
    for (std::size_t fate = 0; fate < kReportedFates.size(); ++fate)
        for (const auto& [kind, counts] : figures.fates)
            if (OutcomeOf(fate) == Outcome::kNotSent && counts[fate] > 0)
                parts.push_back(Counted(counts[fate], kind) + " " + kReportedFates[fate]);
    const int count = CountOf(figures, Outcome::kNotSent);
    std::string text = Counted(count, "message") + (count == 1 ? " was" : " were") +
                       " not sent: " + Joined(parts, ", ") + ".";
    if (figures.maybe_sent > 0)
        text += " Of " + std::to_string(figures.maybe_sent) +
                " nobody heard how an attempt ended, so that may have been sent.";
    return text;
}

std::string DelayText(const std::vector<std::int64_t>& delays) {
    if (delays.empty())
        return "none was sent";
    return "median " + Age(delays[delays.size() / 2]) + ", at most " + Age(delays.back());
}

} // namespace

std::string MinuteText(const OperatorWorld& world, std::int64_t ms) {
    const CalendarTime time =
        world.local_time(std::chrono::system_clock::time_point(std::chrono::milliseconds(ms)));
    return ToUtf8(DateText(time) + u" " + HourMinuteText(time));
}

std::string DaysText(const OperatorWorld& world, const ReportFigures& figures) {
    const auto day = [&](std::int64_t ms) { return MinuteText(world, ms).substr(0, 10); };
    const std::string first = day(figures.edges.front());
    const std::string last = day(figures.edges.back() - 1);
    return first == last ? first : first + " to " + last;
}

std::string Percent(std::int64_t part, std::int64_t whole) {
    if (whole == 0)
        return "not known";
    // Down: 100 % is all of it.
    const std::int64_t tenths = part * 1000 / whole;
    return std::to_string(tenths / 10) + (tenths == 1000 ? "" : "." + std::to_string(tenths % 10)) +
           " %";
}

std::string SignalText(const ReportBucket& bucket) {
    return "average " + std::to_string(bucket.signal_sum / bucket.readings) + ", " +
           std::to_string(bucket.weakest) + " to " + std::to_string(bucket.strongest);
}

std::string RecipientText(const HistoryRow& row) {
    return row.kind == "SMS" ? Masked(FromUtf8(row.recipient)) : row.recipient;
}

std::vector<std::pair<std::string, std::string>> Summary(const ReportFigures& figures) {
    const ReportBucket& total = figures.total;
    std::vector<std::pair<std::string, std::string>> summary{
        {"alarms", std::to_string(total.alarms)},
        {"messages sent", std::to_string(CountOf(figures, Outcome::kSent))},
        {"held back", std::to_string(CountOf(figures, Outcome::kHeldBack))},
        {"not sent", std::to_string(CountOf(figures, Outcome::kNotSent))}};
    if (const int waiting = CountOf(figures, Outcome::kWaits); waiting > 0)
        summary.emplace_back("waiting now", std::to_string(waiting));
    summary.emplace_back("SMS took", DelayText(figures.sms_delays));
    summary.emplace_back("unit ready", Percent(total.ready, total.known));
    summary.emplace_back("signal", total.readings == 0 ? "not known" : SignalText(total));
    return summary;
}

std::vector<std::string> WhatWentWrong(const OperatorWorld& world, const ReportFigures& figures) {
    std::vector<std::string> said;
    if (CountOf(figures, Outcome::kNotSent) > 0)
        said.push_back(NotSentText(figures));
    if (figures.waits_since > 0 && figures.now - figures.waits_since > kWaitUnmentioned) {
        const int waiting = CountOf(figures, Outcome::kWaits);
        said.push_back(Counted(waiting, "message") + (waiting == 1 ? " waits" : " wait") +
                       ", the oldest since " + MinuteText(world, figures.waits_since) + ".");
    }
    if (figures.sent_again > 0)
        said.push_back(Counted(figures.sent_again, "message") +
                       " had to be queued again, after the unit or the service was lost or on "
                       "request.");
    if (!figures.refusals.empty())
        said.push_back("Attempts failed with the answers " + MostOf(figures.refusals) + ".");
    if (!figures.not_ready.empty())
        said.push_back("The unit was not ready " + SpansText(world, figures.not_ready) + ".");
    if (!figures.silent.empty())
        said.push_back("Nothing is known of the unit " + SpansText(world, figures.silent) +
                       ": the service did not run, or read no signal.");
    if (figures.weak_readings > 0)
        said.push_back("The signal was below 5 in " + std::to_string(figures.weak_readings) +
                       " of " + Counted(figures.total.readings, "reading") + ".");
    if (said.empty())
        said.push_back(figures.total.known == 0 && figures.fates.empty()
                           ? "The history has nothing about these days."
                           : "Nothing, as far as the history knows.");
    return said;
}

std::string HeldBackText(const ReportFigures& figures) {
    const int count = CountOf(figures, Outcome::kHeldBack);
    if (count == 0)
        return "";
    return Counted(count, "message") + (count == 1 ? " was" : " were") +
           " held back on purpose: " + MostOf(figures.held_back) + ".";
}

} // namespace tarnex
