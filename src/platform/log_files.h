#pragma once

#include "platform/log_table.h"
#include "platform/result.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarnex {

// A row of the table "Log" as text by position; nothing for NULL.
struct StoredLogRow {
    std::int64_t id = 0; // grows from row to row
    std::array<std::optional<std::string>, log_column::kCount> columns;
};

// Reads an open log database that others write at the same time.
class LogReader {
  public:
    virtual ~LogReader() = default;

    // What stood in the way of the last reading, to follow the name of the file: "is damaged"; ""
    // when nothing did.
    virtual std::string Problem() const = 0;
    // The last reading failed only since another program kept the file locked for 2 s.
    virtual bool LockedOut() const = 0;
    // The last rows, oldest first; nothing when the file cannot be read.
    virtual std::optional<std::vector<StoredLogRow>> Last(int count) = 0;
    // All rows behind that id, oldest first; the same.
    virtual std::optional<std::vector<StoredLogRow>> After(std::int64_t id) = 0;
    // The open file does not stand at its path any more.
    virtual bool Moved() const = 0;
};

// Log databases as an operator deals with them.
class LogFiles {
  public:
    virtual ~LogFiles() = default;

    // Makes a log database by a schema (SQL text). It appears at path complete or not at all, and
    // never in the place of an existing file. Its owner may write to it and its group may read it.
    // "" when that succeeds, else what stands in the way, in words for an operator.
    virtual std::string Create(const std::string& path, const std::string& schema) = 0;
    // "" unless the file at path is of a kind that this machine has nothing for; else what and what
    // to do, to follow the name of the file.
    virtual std::string KindProblem(const std::string& path) = 0;
    // "" when the service could write to the file, run by this user; else the same.
    virtual std::string WritingProblem(const std::string& path) = 0;
    // The trouble is to follow the name of the file: "is damaged".
    virtual Result<std::unique_ptr<LogReader>> Open(const std::string& path) = 0;
};

} // namespace tarnex
