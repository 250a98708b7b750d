#pragma once

#include "platform/message_history.h"

#include <array>
#include <map>
#include <string>
#include <vector>

namespace tarnex {

// What came of a message, as plots show it.
enum class Outcome { kSent, kHeldBack, kNotSent, kWaits };
inline constexpr std::size_t kOutcomes = 4;

// The fates as reports list them, with that of what still waits.
inline constexpr std::array<const char*, 7> kReportedFates = {
    "sent", "held back", "given up", "pushed out", "dropped", "lost", "waits"};
Outcome OutcomeOf(std::size_t fate);

// Times here are ms since 1970, UTC.
struct ReportSpan {
    std::int64_t begin;
    std::int64_t end;
    std::int64_t Length() const { return end - begin; }
};

// What a bar of a plot tells of.
struct ReportBucket {
    int alarms = 0;
    std::array<int, kOutcomes> messages{};
    std::int64_t length = 0; // up to now, in ms as the next two
    std::int64_t known = 0;  // how long it was known whether the unit was ready
    std::int64_t ready = 0;  // and how long it was
    int readings = 0;        // of the signal
    long signal_sum = 0;
    int weakest = 0;
    int strongest = 0;
};

struct ReportFigures {
    std::vector<std::int64_t> edges; // of the buckets, one more than those
    std::vector<ReportBucket> buckets;
    ReportBucket total;
    std::int64_t now = 0;

    // Each message once, with its last fate: one that was sent again counts as that one.
    std::map<std::string, std::array<int, kReportedFates.size()>> fates; // by "SMS" and "mail"
    std::vector<HistoryRow> not_sent;
    std::int64_t waits_since = 0; // the oldest of those that wait; 0: none
    int maybe_sent = 0;           // not sent, but nobody heard how an attempt ended
    int sent_again = 0;
    std::map<std::string, int> held_back; // by reason
    std::map<std::string, int> refusals;  // by what the unit or the server answered
    std::vector<std::int64_t> sms_delays; // of those that were sent; sorted
    std::vector<ReportSpan> not_ready;    // the unit, longer than it takes to start
    std::vector<ReportSpan> silent;       // nothing is known
    int weak_readings = 0;
};

// rows: by id, from the first edge on; what comes before it tells how the unit was then. Of what
// comes after now nothing is known.
ReportFigures FiguresOf(const std::vector<HistoryRow>& rows, std::vector<std::int64_t> edges,
                        std::int64_t now);

} // namespace tarnex
