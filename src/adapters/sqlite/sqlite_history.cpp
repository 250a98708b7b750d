#include "adapters/sqlite/sqlite_history.h"

#include "adapters/sqlite/sqlite_handles.h"
#include "platform/file_path.h"

#include <filesystem>
#include <string_view>

namespace tarnex {

namespace {

constexpr int kFormat = 1; // user_version, as SchemaSql() sets it
constexpr int kReaderLockWaitMs = 2000;
constexpr int kRowsBetweenTrims = 64;
constexpr std::int64_t kBytesPerMegabyte = 1'000'000;

// Little memory; no wait for the disk at each change, and little to bring home at once. A change
// costs whole pages, so these are small.
constexpr const char* kHistorySetup =
    "PRAGMA cache_size = -64; PRAGMA synchronous = NORMAL; PRAGMA wal_autocheckpoint = 800;";
constexpr const char* kIsWaiting = "fate = '' AND kind IN ('SMS', 'mail')";
// Of two words at most: for a longer list SQLite would make a table of its own with each row.
constexpr const char* kIsNotSent =
    "(fate IN ('given up', 'pushed out') OR fate IN ('dropped', 'lost')) AND again_as = 0";

std::string SchemaSql() {
    return std::string(R"(
PRAGMA page_size = 1024;
PRAGMA auto_vacuum = INCREMENTAL;
PRAGMA journal_mode = WAL;
PRAGMA journal_size_limit = 1000000;
BEGIN IMMEDIATE;
CREATE TABLE IF NOT EXISTS History(
    id INTEGER PRIMARY KEY, at INTEGER NOT NULL, kind TEXT NOT NULL, recipient TEXT NOT NULL,
    number TEXT NOT NULL, text TEXT NOT NULL, record TEXT NOT NULL, attempts TEXT NOT NULL,
    fate TEXT NOT NULL, reason TEXT NOT NULL, ended INTEGER NOT NULL, again_of INTEGER NOT NULL,
    again_as INTEGER NOT NULL, maybe_sent INTEGER NOT NULL);
CREATE INDEX IF NOT EXISTS Waiting ON History(id) WHERE )") +
           kIsWaiting + R"(;
CREATE INDEX IF NOT EXISTS NotSent ON History(id) WHERE )" +
           kIsNotSent + R"(;
PRAGMA user_version = 1;
COMMIT;
)";
}

std::string TrimSql() {
    return std::string("DELETE FROM History WHERE id IN (SELECT id FROM History WHERE NOT (") +
           kIsWaiting + ") ORDER BY id LIMIT 256)";
}

// clang-format off
constexpr Explanation kHistoryExplanations[] = {
    {SQLITE_BUSY,     "is locked by another program: end what keeps it locked"},
    {SQLITE_READONLY, "cannot be written: give the user of this service write access to the file and its folder"},
    {SQLITE_CANTOPEN, "cannot be opened: give the user of this service read and write access to the file and its folder"},
    {SQLITE_PERM,     "cannot be opened: give the user of this service read and write access to the file and its folder"},
    {SQLITE_FULL,     "cannot grow: free space on its disk"},
    {SQLITE_IOERR,    "cannot be read or written: look for a full disk, a used-up quota or a failing disk"},
    {SQLITE_NOTADB,   "is damaged: move it away, and the service makes a new one"},
    {SQLITE_CORRUPT,  "is damaged: move it away, and the service makes a new one"},
};
// clang-format on

template <class... Values>
void Bind(sqlite3_stmt* statement, const Values&... values) {
    int place = 0;
    const auto bind = [&](const auto& value) {
        if constexpr (std::is_integral_v<std::decay_t<decltype(value)>>)
            sqlite3_bind_int64(statement, ++place, value);
        else // the text outlives the step
            sqlite3_bind_text(statement, ++place, value.data(), int(value.size()), SQLITE_STATIC);
    };
    (bind(values), ...);
}

bool Step(const Statement& statement) {
    sqlite3_step(statement.get());
    return sqlite3_reset(statement.get()) == SQLITE_OK;
}

std::string TextAt(sqlite3_stmt* row, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
    return text ? std::string(text, std::size_t(sqlite3_column_bytes(row, column))) : "";
}

HistoryRow RowOf(sqlite3_stmt* row) {
    return {.id = sqlite3_column_int64(row, 0),
            .at = sqlite3_column_int64(row, 1),
            .kind = TextAt(row, 2),
            .recipient = TextAt(row, 3),
            .number = TextAt(row, 4),
            .text = TextAt(row, 5),
            .record = TextAt(row, 6),
            .attempts = TextAt(row, 7),
            .fate = TextAt(row, 8),
            .reason = TextAt(row, 9),
            .ended = sqlite3_column_int64(row, 10),
            .again_of = sqlite3_column_int64(row, 11),
            .again_as = sqlite3_column_int64(row, 12),
            .maybe_sent = sqlite3_column_int64(row, 13)};
}

std::string SqlOf(const HistoryQuery& query) {
    std::string sql = "SELECT * FROM History WHERE id > ?1 AND at >= ?2";
    if (query.id != 0)
        sql += " AND id = ?3";
    if (query.until != 0)
        sql += " AND at < " + std::to_string(query.until);
    if (query.unit)
        sql += " AND kind IN ('unit', 'signal')";
    if (query.no_signal)
        sql += " AND kind <> 'signal'";
    if (query.waiting)
        sql += std::string(" AND ") + kIsWaiting;
    if (query.not_sent)
        sql += std::string(" AND ") + kIsNotSent;
    return sql + " ORDER BY id DESC LIMIT ?4";
}

bool IsThere(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(ToPath(path), error);
}

// Nobody else: these are people's messages. The files beside it get the same mode.
void LetGroupRead(const std::string& path) {
    using std::filesystem::perms;
    std::error_code error;
    std::filesystem::permissions(ToPath(path),
                                 perms::owner_read | perms::owner_write | perms::group_read, error);
}

} // namespace

// An open file, or the reason why it is not open.
class HistoryConnection {
  public:
    HistoryConnection(const std::string& path, int flags) {
        sqlite3* database = nullptr;
        const int opened =
            sqlite3_open_v2(path.c_str(), &database, flags | SQLITE_OPEN_NOMUTEX, nullptr);
        database_.reset(database);
        sqlite3_extended_result_codes(database, 1);
        problem_ = opened == SQLITE_OK ? Prepared(path, flags) : Explain();
    }

    const std::string& Problem() const { return problem_; }
    bool LockedOut() const { return (sqlite3_errcode(database_.get()) & 0xFF) == SQLITE_BUSY; }
    bool Moved() const { return tarnex::Moved(database_); }
    void WaitForLocks(int ms) { sqlite3_busy_timeout(database_.get(), ms); }

    // "", or what stands in the way.
    std::string Store(const std::vector<HistoryChange>& changes, int megabytes) {
        bool stored = Step(begin_);
        for (std::size_t i = 0; stored && i < changes.size(); ++i)
            stored = std::visit([this](const auto& change) { return Store(change); }, changes[i]);
        stored = stored && Step(commit_);
        if (!stored) {
            std::string problem = Explain();
            sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
            return problem;
        }
        if (rows_since_trim_ >= kRowsBetweenTrims)
            Trim(megabytes);
        return "";
    }

    Result<std::vector<HistoryRow>> Rows(const HistoryQuery& query) {
        const Statement select = Prepare(database_, SqlOf(query));
        if (!select)
            return Trouble{Explain()};
        const std::int64_t limit = query.last > 0 ? query.last : -1;
        sqlite3_bind_int64(select.get(), 1, query.after);
        sqlite3_bind_int64(select.get(), 2, query.since);
        sqlite3_bind_int64(select.get(), 3, query.id);
        sqlite3_bind_int64(select.get(), 4, limit);
        std::vector<HistoryRow> rows;
        int result;
        while ((result = sqlite3_step(select.get())) == SQLITE_ROW)
            rows.push_back(RowOf(select.get()));
        if (result != SQLITE_DONE)
            return Trouble{Explain()};
        std::ranges::reverse(rows);
        return rows;
    }

  private:
    // "", or what stands in the way.
    std::string Prepared(const std::string& path, int flags) {
        const bool writes = (flags & SQLITE_OPEN_READWRITE) != 0;
        WaitForLocks(writes ? kLockWaitMs : kReaderLockWaitMs);
        const int format = Number("PRAGMA user_version");
        if (format < 0)
            return Explain();
        if (format > kFormat)
            return "was made by a newer version of the service: move it away, or install that one";
        if (!writes)
            return format == kFormat ? "" : "is no history of this service: name another file";
        if (format == 0)
            LetGroupRead(path);
        if (!Run(kHistorySetup) || (format == 0 && !Run(SchemaSql())))
            return Explain();
        begin_ = Persistent("BEGIN IMMEDIATE");
        commit_ = Persistent("COMMIT");
        add_ = Persistent(
            "INSERT OR IGNORE INTO History VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
        again_ = Persistent("UPDATE History SET again_as = ? WHERE id = ?");
        attempt_ = Persistent("UPDATE History SET attempts = attempts || ? WHERE id = ?");
        end_ = Persistent("UPDATE History SET fate = ?, ended = ? WHERE id = ?");
        return begin_ && commit_ && add_ && again_ && attempt_ && end_ ? "" : Explain();
    }

    bool Store(const HistoryRow& row) {
        ++rows_since_trim_;
        Bind(add_.get(), row.id, row.at, row.kind, row.recipient, row.number, row.text, row.record,
             row.attempts, row.fate, row.reason, row.ended, row.again_of, row.again_as,
             row.maybe_sent);
        if (!Step(add_))
            return false;
        Bind(again_.get(), row.id, row.again_of);
        return row.again_of == 0 || Step(again_);
    }
    bool Store(const HistoryAttempt& attempt) {
        Bind(attempt_.get(), attempt.text, attempt.id);
        return Step(attempt_);
    }
    bool Store(const HistoryEnd& end) {
        Bind(end_.get(), end.fate, end.at, end.id);
        return Step(end_);
    }

    void Trim(int megabytes) {
        rows_since_trim_ = 0;
        const std::int64_t page = Number("PRAGMA page_size");
        const std::int64_t free = Number("PRAGMA freelist_count");
        const std::int64_t used = Number("PRAGMA page_count") - free;
        if (used * page > megabytes * kBytesPerMegabyte && Run(TrimSql()))
            Run("PRAGMA incremental_vacuum(256)");
    }

    bool Run(const std::string& sql) {
        return sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    }
    // -1 when it cannot be had.
    int Number(const char* sql) {
        const Statement statement = Prepare(database_, sql);
        return statement && sqlite3_step(statement.get()) == SQLITE_ROW
                   ? sqlite3_column_int(statement.get(), 0)
                   : -1;
    }
    Statement Persistent(const char* sql) {
        return Prepare(database_, sql, SQLITE_PREPARE_PERSISTENT);
    }
    std::string Explain() const {
        const char* const known =
            FindExplanation(kHistoryExplanations, sqlite3_extended_errcode(database_.get()));
        return known ? known : std::string("fails (") + sqlite3_errmsg(database_.get()) + ")";
    }

    Database database_;
    std::string problem_;
    Statement begin_, commit_, add_, again_, attempt_, end_;
    int rows_since_trim_ = 0;
};

SqliteHistory::SqliteHistory(std::string path) : path_(std::move(path)) {}
SqliteHistory::~SqliteHistory() = default;

std::string SqliteHistory::Store(const std::vector<HistoryChange>& changes) {
    if (connection_ && connection_->Moved())
        connection_.reset();
    if (!connection_)
        connection_ =
            std::make_unique<HistoryConnection>(path_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    connection_->WaitForLocks(wait_for_locks_ ? kLockWaitMs : 0);
    std::string problem = connection_->Problem();
    if (problem.empty())
        problem = connection_->Store(changes, megabytes_);
    wait_for_locks_ = problem.empty() || !connection_->LockedOut();
    if (problem.empty())
        return "";
    connection_.reset();
    return "The history " + path_ + " " + problem + ".";
}

Result<std::vector<HistoryRow>> SqliteHistory::Rows(const HistoryQuery& query) {
    if (!IsThere(path_))
        return std::vector<HistoryRow>();
    if (!connection_ || connection_->Moved())
        connection_ = std::make_unique<HistoryConnection>(path_, SQLITE_OPEN_READWRITE);
    const std::string problem = connection_->Problem();
    auto rows = problem.empty() ? connection_->Rows(query) : Trouble{problem};
    if (rows)
        return rows;
    connection_.reset();
    return Trouble{"The history " + path_ + " " + rows.TroubleText() + "."};
}

// ---- for others

namespace {

class SqliteHistoryReader : public HistoryReader {
  public:
    explicit SqliteHistoryReader(const std::string& path)
        : connection_(path, SQLITE_OPEN_READONLY) {}
    const std::string& Problem() const { return connection_.Problem(); }
    Result<std::vector<HistoryRow>> Rows(const HistoryQuery& query) override {
        return connection_.Rows(query);
    }

  private:
    HistoryConnection connection_;
};

} // namespace

Result<std::unique_ptr<HistoryReader>> OpenSqliteHistory(const std::string& path) {
    auto reader = std::make_unique<SqliteHistoryReader>(path);
    if (!reader->Problem().empty())
        return Trouble{reader->Problem()};
    return std::unique_ptr<HistoryReader>(std::move(reader));
}

} // namespace tarnex
