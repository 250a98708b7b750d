#pragma once

#include "platform/text.h"

#include <array>
#include <string>
#include <variant>

namespace tarnex {

// One value of a row: not written (NULL), a text or a number.
using LogValue = std::variant<std::monostate, Text, int>;

// The columns of the table "Log", which are known by position: a database may call them anything.
namespace log_column {
enum Column : std::size_t {
    kNumber, // given by the database, never written
    kDate,
    kTime,
    kDirection,
    kSource,
    kMessage,
    kEventName,
    kState,
    kAction,
    kBySMS,
    kByEmail,
    kMachineName,
    kMemoOrTarget,
    kCount,
};
} // namespace log_column

using LogRow = std::array<LogValue, log_column::kCount>;

// The log database's table "Log". No call holds the loop up for more than 100 ms.
class LogTable {
  public:
    virtual ~LogTable() = default;

    // Opens the database file at path, which replaces the one that was open. "" when that succeeds,
    // else what is wrong and what to do, in words for an operator. A file that cannot be used
    // leaves the one that was open as it is. That the file in use is gone or locked at the moment
    // is no failure.
    virtual std::string Open(const Text& path) = 0;
    // Stores one row. "" when it is stored, else what stands in the way, in words for an operator;
    // the row is lost then.
    virtual std::string Append(const LogRow& row) = 0;
};

} // namespace tarnex
