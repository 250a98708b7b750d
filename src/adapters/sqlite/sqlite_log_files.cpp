#include "adapters/sqlite/sqlite_log_files.h"

#include "adapters/sqlite/sqlite_handles.h"
#include "adapters/sqlite/sqlite_log_table.h"
#include "adapters/system/access_log.h"
#include "adapters/system/replace_file.h"
#include "adapters/system/this_system.h"
#include "platform/error_words.h"
#include "platform/file_path.h"

#include <algorithm>

namespace tarnex {

namespace {

constexpr int kPatienceMs = 2000; // for another program's lock

// clang-format off
constexpr Explanation kFileExplanations[] = {
    {SQLITE_BUSY,     "is locked by another program: end what keeps it locked"},
    {SQLITE_READONLY, "needs files beside it that only its users may make: run this as {who}"},
    {SQLITE_CANTOPEN, "cannot be opened: run this as {who}"},
    {SQLITE_NOTADB,   "is not an SQLite database: name another file"},
    {SQLITE_ERROR,    "has no table \"Log\": name another file, or make one with \"tarnexctl log create\""},
    {SQLITE_CORRUPT,  "is damaged: move it away and make a new one with \"tarnexctl log create\""},
};
// clang-format on

// With who may do it in the place of "{who}".
std::string ForThisSystem(std::string words) {
    constexpr std::string_view kPlace = "{who}";
    if (const std::size_t at = words.find(kPlace); at != std::string::npos)
        words.replace(at, kPlace.size(), WordsOfThisSystem().who_may);
    return words;
}

Database OpenDatabase(const std::string& path, int flags) {
    sqlite3* database = nullptr;
    sqlite3_open_v2(path.c_str(), &database, flags, nullptr);
    sqlite3_busy_timeout(database, kPatienceMs);
    return Database(database);
}

// "", or what is wrong.
std::string Build(const std::string& path, const std::string& schema) {
    const Database database = OpenDatabase(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    if (sqlite3_errcode(database.get()) == SQLITE_CANTOPEN)
        return ForThisSystem(
            "its folder is missing or may not be written to. Make the folder, or run "
            "this as {who}");
    const int result = sqlite3_exec(database.get(), schema.c_str(), nullptr, nullptr, nullptr);
    if (result == SQLITE_FULL)
        return "no space left on the device. Free space on its disk";
    return result == SQLITE_OK ? "" : sqlite3_errmsg(database.get());
}

class SqliteLogReader : public LogReader {
  public:
    // "", or what stands in the way.
    std::string Open(const std::string& path) {
        database_ = OpenDatabase(path, SQLITE_OPEN_READONLY);
        last_ = Prepare(database_, "SELECT rowid, * FROM \"Log\" ORDER BY rowid DESC LIMIT ?");
        if (!last_)
            return Problem();
        after_ = Prepare(database_, "SELECT rowid, * FROM \"Log\" WHERE rowid > ? ORDER BY rowid");
        return after_ ? "" : Problem();
    }

    std::string Problem() const override {
        const int code = sqlite3_errcode(database_.get());
        if (code == SQLITE_OK || code == SQLITE_DONE)
            return "";
        const char* const known = FindExplanation(kFileExplanations, code);
        return known ? ForThisSystem(known)
                     : std::string("cannot be read: ") + sqlite3_errmsg(database_.get());
    }

    bool LockedOut() const override { return sqlite3_errcode(database_.get()) == SQLITE_BUSY; }

    std::optional<std::vector<StoredLogRow>> Last(int count) override {
        auto rows = Run(last_.get(), count);
        if (rows)
            std::ranges::reverse(*rows);
        return rows;
    }

    std::optional<std::vector<StoredLogRow>> After(std::int64_t id) override {
        return Run(after_.get(), id);
    }

    bool Moved() const override { return tarnex::Moved(database_); }

  private:
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
                row.columns[std::size_t(i)].emplace(
                    reinterpret_cast<const char*>(text),
                    std::size_t(sqlite3_column_bytes(statement, i + 1))); // NUL may be among them
        return row;
    }

    Database database_;
    Statement last_;
    Statement after_;
};

} // namespace

std::string SqliteLogFiles::Create(const std::string& path, const std::string& schema) {
    std::error_code error;
    if (std::filesystem::exists(ToPath(path), error))
        return path + " is there already and stays as it is";
    const std::string draft = path + ".new";
    RemoveFile(draft);
    std::string problem = Build(draft, schema);
    if (problem.empty())
        problem = WritingProblem(draft); // the service must be able to use it
    if (problem.empty()) // people's messages: who may read the settings may read them
        if (const std::error_code failed = PlaceNewFile(draft, path))
            problem = WordsFor(failed);
    RemoveFile(draft);
    return problem.empty() ? "" : path + " cannot be made: " + problem;
}

std::string SqliteLogFiles::KindProblem(const std::string& path) {
    return IsAccessDatabase(path) ? AccessTrouble() : "";
}

std::string SqliteLogFiles::WritingProblem(const std::string& path) {
    return IsAccessDatabase(path) ? AccessWritingProblem(path)
                                  : SqliteLogTable().Open(FromUtf8(path));
}

Result<std::unique_ptr<LogReader>> SqliteLogFiles::Open(const std::string& path) {
    if (IsAccessDatabase(path))
        return OpenAccessLog(path);
    auto reader = std::make_unique<SqliteLogReader>();
    if (std::string problem = reader->Open(path); !problem.empty())
        return Trouble{std::move(problem)};
    return std::unique_ptr<LogReader>(std::move(reader));
}

std::string SqliteVersion() {
    return sqlite3_libversion();
}

} // namespace tarnex
