#include "platform/sqlite/log_database.h"

#include "platform/sqlite/sqlite_log_table.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include <sqlite3.h>
#include <unistd.h>

namespace tarnex {

namespace {

constexpr int kPatienceMs = 2000; // for another program's lock

struct CloseDatabase {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

Database OpenDatabase(const std::string& path, int flags) {
    sqlite3* database = nullptr;
    sqlite3_open_v2(path.c_str(), &database, flags, nullptr);
    sqlite3_busy_timeout(database, kPatienceMs);
    return Database(database);
}

// "", or what is wrong.
std::string Build(const std::string& path, const std::string& schema) {
    const Database database = OpenDatabase(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    if (sqlite3_exec(database.get(), schema.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK)
        return "";
    return sqlite3_errmsg(database.get());
}

} // namespace

std::string CreateLogDatabase(const std::string& path, const std::string& schema) {
    std::error_code error;
    if (std::filesystem::exists(path, error))
        return path + " is there already and stays as it is";
    const std::string draft = path + ".new";
    std::filesystem::remove(draft, error);
    std::string problem = Build(draft, schema);
    if (problem.empty())
        problem = SqliteLogTable().Open(FromUtf8(draft)); // the service must be able to use it
    if (problem.empty() && link(draft.c_str(), path.c_str()) != 0)
        problem = std::strerror(errno);
    std::filesystem::remove(draft, error);
    return problem.empty() ? "" : path + " cannot be made: " + problem;
}

struct LogReader::Connection {
    Database database;
    Statement last;
    Statement after;

    Statement Prepare(const char* sql) const {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(database.get(), sql, -1, &statement, nullptr);
        return Statement(statement);
    }

    // The rows of a statement of which column 0 is the id.
    static std::optional<std::vector<StoredLogRow>> Run(sqlite3_stmt* statement,
                                                        std::int64_t argument) {
        std::vector<StoredLogRow> rows;
        sqlite3_bind_int64(statement, 1, argument);
        int result;
        while ((result = sqlite3_step(statement)) == SQLITE_ROW)
            rows.push_back(RowOf(statement));
        sqlite3_reset(statement);
        return result == SQLITE_DONE ? std::optional(std::move(rows)) : std::nullopt;
    }

    static StoredLogRow RowOf(sqlite3_stmt* statement) {
        StoredLogRow row;
        row.id = sqlite3_column_int64(statement, 0);
        const int columns = std::min(sqlite3_column_count(statement) - 1, int(row.columns.size()));
        for (int i = 0; i < columns; ++i)
            if (const auto* text = sqlite3_column_text(statement, i + 1))
                row.columns[std::size_t(i)] = reinterpret_cast<const char*>(text);
        return row;
    }
};

LogReader::LogReader() = default;
LogReader::LogReader(LogReader&&) noexcept = default;
LogReader& LogReader::operator=(LogReader&&) noexcept = default;
LogReader::~LogReader() = default;

std::string LogReader::Open(const std::string& path) {
    auto connection = std::make_unique<Connection>();
    connection->database = OpenDatabase(path, SQLITE_OPEN_READONLY);
    connection->last =
        connection->Prepare("SELECT rowid, * FROM \"Log\" ORDER BY rowid DESC LIMIT ?");
    connection->after =
        connection->Prepare("SELECT rowid, * FROM \"Log\" WHERE rowid > ? ORDER BY rowid");
    if (!connection->last || !connection->after)
        return sqlite3_errmsg(connection->database.get());
    connection_ = std::move(connection);
    return "";
}

std::optional<std::vector<StoredLogRow>> LogReader::Last(int count) const {
    auto rows = Connection::Run(connection_->last.get(), count);
    if (rows)
        std::ranges::reverse(*rows);
    return rows;
}

std::optional<std::vector<StoredLogRow>> LogReader::After(std::int64_t id) const {
    return Connection::Run(connection_->after.get(), id);
}

bool LogReader::Moved() const {
    int moved = 0;
    sqlite3_file_control(connection_->database.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    return moved != 0;
}

} // namespace tarnex
