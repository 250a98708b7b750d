#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarnex {

// Makes a log database by a schema (SQL text). It appears at path complete or not at all, and never
// in the place of an existing file. Its owner may write to it and its group may read it. "" when
// that succeeds, else what stands in the way, in words for an operator.
std::string CreateLogDatabase(const std::string& path, const std::string& schema);

// A row of the table "Log" as text by position, 0 to 12; nothing for NULL.
struct StoredLogRow {
    std::int64_t id = 0; // grows from row to row
    std::array<std::optional<std::string>, 13> columns;
};

// Reads a log database that others write at the same time.
class LogReader {
  public:
    LogReader();
    LogReader(LogReader&&) noexcept;
    LogReader& operator=(LogReader&&) noexcept;
    ~LogReader();

    // "" when the file can be read, else what stands in the way, to follow its name: "is damaged".
    std::string Open(const std::string& path);
    // The same about the last reading.
    std::string Problem() const;
    // The last reading failed only since another program kept the file locked for 2 s.
    bool LockedOut() const;
    // The last rows, oldest first; nothing when the file cannot be read.
    std::optional<std::vector<StoredLogRow>> Last(int count) const;
    // All rows behind that id, oldest first; the same.
    std::optional<std::vector<StoredLogRow>> After(std::int64_t id) const;
    // The open file does not stand at its path any more.
    bool Moved() const;

  private:
    struct Connection;
    std::unique_ptr<Connection> connection_;
};

} // namespace tarnex
