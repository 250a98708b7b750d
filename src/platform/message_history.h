#pragma once

#include "platform/result.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace tarnex {

// A row of the history: a message, or what was seen of the unit. Texts are UTF-8; times are ms
// since 1970, UTC.
struct HistoryRow {
    std::int64_t id = 0;         // grows from row to row
    std::int64_t at = 0;         // it was queued, held back or seen
    std::string kind{};          // "SMS", "mail", "unit" or "signal"
    std::string recipient{};     // telephone number or address
    std::string number{};        // of an SMS: "1" or "2"
    std::string text{};          // of the message; of the unit its state or signal
    std::string record{};        // of the event; "" for none
    std::string attempts{};      // a line each, "<time> <result>"; without its end while it lasts
    std::string fate{};          // "" while it waits, and where there is none
    std::string reason{};        // of what was held back
    std::int64_t ended = 0;      // when it got its fate; while it waits, when it was seen to
    std::int64_t again_of = 0;   // the message that it sends again; 0 for none
    std::int64_t again_as = 0;   // the message that sends it again; 0 for none
    std::int64_t maybe_sent = 0; // how often it may have been sent before it was queued
    friend bool operator==(const HistoryRow&, const HistoryRow&) = default;
};

// What happened to a row.
struct HistoryAttempt {
    std::int64_t id;
    std::string text; // to be added to its attempts
};
struct HistoryEnd {
    std::int64_t id;
    std::string fate;
    std::int64_t at;
};
// A row that is added is named in the row that it sends again.
using HistoryChange = std::variant<HistoryRow, HistoryAttempt, HistoryEnd>;

// Which rows; all that is said must hold.
struct HistoryQuery {
    std::int64_t id = 0;    // this one; 0: any
    std::int64_t after = 0; // ids behind this one
    std::int64_t since = 0; // of that time or later
    std::int64_t until = 0; // before that time; 0: any
    bool waiting = false;   // messages without a fate
    bool not_sent = false;  // given up, pushed out, dropped or lost, and not sent again
    bool no_signal = false; // without the rows of the unit's signal
    bool unit = false;      // what was seen of the unit alone
    int last = 0;           // no more than the last so many; 0: all
};

// Reads a history that is being written.
class HistoryReader {
  public:
    virtual ~HistoryReader() = default;
    // By id. Where there is no history there are no rows.
    virtual Result<std::vector<HistoryRow>> Rows(const HistoryQuery& query) = 0;
};

// The history of the service. No call holds the loop up for more than 100 ms.
class MessageHistory : public HistoryReader {
  public:
    // Stores all changes in their order, or none. The history is made where it is missing. "" when
    // they are stored, else what stands in the way, in words for an operator.
    virtual std::string Store(const std::vector<HistoryChange>& changes) = 0;
    // The oldest rows with a fate go, a few at a time, so that it takes no more than that.
    virtual void KeepTo(int megabytes) = 0;
};

} // namespace tarnex
