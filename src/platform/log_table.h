#pragma once

#include "platform/text.h"

#include <array>
#include <string>
#include <variant>

namespace tarnex {

// One value of a row: not written (NULL), a text or a number.
using LogValue = std::variant<std::monostate, Text, int>;

// The 13 columns of the table "Log" by position. Position 0 is the row number: never written.
using LogRow = std::array<LogValue, 13>;

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
