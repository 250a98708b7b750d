#pragma once

#include "adapters/windows/odbc.h"
#include "platform/log_files.h"

#include <optional>
#include <string>
#include <vector>

namespace tarnex {

// The driver for Access databases as 64-bit programs know it.
constexpr const wchar_t* kAccessDriver = L"Microsoft Access Driver (*.mdb, *.accdb)";

// The table "Log" of an Access database, opened by that driver, or the reason why it is not open.
// To be used in one thread.
class AccessConnection {
  public:
    explicit AccessConnection(const std::string& path);
    ~AccessConnection();
    AccessConnection(const AccessConnection&) = delete;
    AccessConnection& operator=(const AccessConnection&) = delete;

    // "", or what stands in the way of using the table, to follow the name of the file.
    const std::string& Problem() const { return problem_; }
    // The same of one row. A column that is not written gets its default.
    std::string Append(const LogRow& row);
    // The last rows, newest first, or those behind an id, oldest first. Nothing: why is told.
    std::optional<std::vector<StoredLogRow>> Last(int count);
    std::optional<std::vector<StoredLogRow>> After(std::int64_t id);
    // What stood in the way of the last reading.
    const std::string& ReadingProblem() const { return reading_problem_; }

  private:
    struct Column {
        std::wstring name;
        bool is_moment = false; // with a date and a time, whichever of them is meant
    };
    struct Parameter;

    std::string Open(const std::string& path);
    void Describe(const OdbcHandle& all, SQLSMALLINT columns);
    bool Bind(const OdbcHandle& insert, SQLUSMALLINT place, std::size_t column,
              Parameter& parameter) const;
    std::optional<std::vector<StoredLogRow>> Read(std::wstring sql, int at_most);
    StoredLogRow RowOf(const OdbcHandle& select) const;

    const OdbcHandle environment_{SQL_HANDLE_ENV, SQL_NULL_HANDLE};
    const OdbcHandle connection_{SQL_HANDLE_DBC, environment_.Get()};
    bool connected_ = false;
    std::vector<Column> columns_;
    std::string reading_problem_;
    const std::string problem_; // the last member, since finding it fills the others
};

} // namespace tarnex
