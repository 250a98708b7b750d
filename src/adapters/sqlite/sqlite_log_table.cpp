#include "adapters/sqlite/sqlite_log_table.h"

#include "adapters/sqlite/sqlite_handles.h"
#include "platform/file_path.h"

#include <filesystem>
#include <vector>

namespace tarnex {

namespace {

constexpr std::size_t kColumns = std::tuple_size_v<LogRow>;
// Little memory, and no wait for the disk at each row of a file in WAL mode.
constexpr const char* kConnectionSetup = "PRAGMA cache_size = -64; PRAGMA synchronous = NORMAL;";

// clang-format off
constexpr Explanation kLogExplanations[] = {
    {SQLITE_BUSY,             "is locked by another program: end what keeps it locked, or switch the file to WAL mode, in which readers lock nobody out"},
    {SQLITE_READONLY_DBMOVED, "was moved or deleted while it was in use: put it back, or make a new one with \"tarnexctl log create\""},
    {SQLITE_READONLY,         "cannot be written: give the user of this service write access to the file and its folder"},
    {SQLITE_CANTOPEN,         "cannot be opened: give the user of this service read and write access to the file and its folder"},
    {SQLITE_PERM,             "cannot be opened: give the user of this service read and write access to the file and its folder"},
    {SQLITE_FULL,             "cannot grow: free space on its disk"},
    {SQLITE_IOERR,            "cannot be read or written: look for a full disk, a used-up quota or a failing disk"},
    {SQLITE_NOTADB,           "is not an SQLite database: name another file (setting \"log-database\"), or move it away and make one with \"tarnexctl log create\""},
    {SQLITE_CORRUPT,          "is damaged: move it away and make a new one with \"tarnexctl log create\""},
};
// clang-format on

std::string About(const std::string& path, const std::string& what) {
    return "The log database " + path + " " + what + ".";
}

std::string Quoted(const std::string& name) {
    std::string quoted = "\"";
    for (const char c : name)
        quoted.append(c == '"' ? 2 : 1, c);
    return quoted + "\"";
}

std::string InsertSql(const std::vector<std::string>& columns) {
    std::string names, places;
    for (std::size_t i = 1; i < kColumns; ++i) {
        const char* const separator = i == 1 ? "" : ", ";
        names += separator + Quoted(columns[i]);
        places += separator + std::string("?") + std::to_string(i);
    }
    return "INSERT INTO \"Log\" (" + names + ") VALUES (" + places + ")";
}

} // namespace

// An open file, or the reason why it is not open.
class SqliteLogTable::Connection {
  public:
    explicit Connection(const std::string& path) : path_(path), problem_(Open()) {}

    const std::string& Path() const { return path_; }
    const std::string& Problem() const { return problem_; }
    bool LockedOut() const { return PrimaryCode() == SQLITE_BUSY; }

    std::string Append(const LogRow& row) {
        // In WAL mode SQLite would go on storing rows in a file that nobody can find any more.
        if (Moved(database_))
            return Explain(SQLITE_READONLY_DBMOVED);
        for (std::size_t i = 1; i < kColumns; ++i)
            Bind(static_cast<int>(i), row[i]);
        sqlite3_step(insert_.get());
        const bool stored = sqlite3_reset(insert_.get()) == SQLITE_OK;
        std::string problem = stored ? "" : Explain();
        if (stored || LockedOut())
            WaitForLocks(stored);
        return problem;
    }

  private:
    std::string Open() {
        sqlite3* database = nullptr;
        const int opened = sqlite3_open_v2(path_.c_str(), &database,
                                           SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
        database_.reset(database);
        sqlite3_extended_result_codes(database, 1);
        WaitForLocks(true);
        if (opened != SQLITE_OK ||
            sqlite3_exec(database, kConnectionSetup, nullptr, nullptr, nullptr) != SQLITE_OK)
            return Explain();
        if (sqlite3_db_readonly(database, "main") == 1)
            return Explain(SQLITE_READONLY);

        std::vector<std::string> columns;
        const Statement info = Prepare(database_, "PRAGMA table_info(\"Log\")");
        while (info && sqlite3_step(info.get()) == SQLITE_ROW)
            columns.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(info.get(), 1)));
        if (PrimaryCode() != SQLITE_OK && PrimaryCode() != SQLITE_DONE)
            return Explain();
        if (columns.empty())
            return About(path_, "has no table \"Log\": make one with log-schema.sql");
        if (columns.size() < kColumns)
            return About(path_, "has a table \"Log\" with " + std::to_string(columns.size()) +
                                    " columns instead of " + std::to_string(kColumns) +
                                    ": rename the table and make a new one with log-schema.sql");
        insert_ = Prepare(database_, InsertSql(columns), SQLITE_PREPARE_PERSISTENT);
        return insert_ ? "" : Explain();
    }

    void Bind(int place, const LogValue& value) {
        if (const Text* text = std::get_if<Text>(&value)) {
            const std::string utf8 = ToUtf8(*text);
            sqlite3_bind_text(insert_.get(), place, utf8.data(), static_cast<int>(utf8.size()),
                              SQLITE_TRANSIENT);
        } else if (const int* number = std::get_if<int>(&value)) {
            sqlite3_bind_int(insert_.get(), place, *number);
        } else {
            sqlite3_bind_null(insert_.get(), place);
        }
    }

    void WaitForLocks(bool wait) { sqlite3_busy_timeout(database_.get(), wait ? kLockWaitMs : 0); }

    int PrimaryCode() const { return sqlite3_errcode(database_.get()) & 0xFF; }

    std::string Explain() const { return Explain(sqlite3_extended_errcode(database_.get())); }
    std::string Explain(int code) const {
        if (const char* const known = FindExplanation(kLogExplanations, code))
            return About(path_, known);
        return About(path_, std::string("fails (") + sqlite3_errmsg(database_.get()) +
                                "): compare its table \"Log\" with log-schema.sql");
    }

    const std::string path_;
    Database database_;
    Statement insert_;
    const std::string problem_; // the last member, since finding it fills the others
};

SqliteLogTable::SqliteLogTable() = default;
SqliteLogTable::~SqliteLogTable() = default;

std::string SqliteLogTable::Open(const Text& path) {
    const std::string file = ToUtf8(path);
    std::error_code error;
    const auto status = std::filesystem::status(ToPath(file), error);
    // Of the file in use the next row finds out whether it can still be used.
    const bool in_use = connection_ && connection_->Path() == file;
    if (status.type() == std::filesystem::file_type::not_found)
        return in_use ? "" : About(file, "is missing: make it with \"tarnexctl log create\"");
    if (status.type() == std::filesystem::file_type::directory)
        return About(file, "is a folder: name a file (setting \"log-database\")");

    auto opened = std::make_unique<Connection>(file);
    if (opened->Problem().empty()) {
        connection_ = std::move(opened);
        return "";
    }
    return in_use && opened->LockedOut() ? "" : opened->Problem();
}

std::string SqliteLogTable::Append(const LogRow& row) {
    return connection_ ? connection_->Append(row) : "No log database is open.";
}

} // namespace tarnex
