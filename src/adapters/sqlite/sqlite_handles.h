#pragma once

#include <algorithm>
#include <memory>
#include <span>
#include <string>

#include <sqlite3.h>

namespace tarnex {

struct CloseDatabase {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

// How long a writer waits for those who read.
inline constexpr int kLockWaitMs = 50;

// Null when it cannot be prepared; the database knows why. flags: SQLITE_PREPARE_...
inline Statement Prepare(const Database& database, const std::string& sql, unsigned flags = 0) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v3(database.get(), sql.c_str(), -1, flags, &statement, nullptr);
    return Statement(statement);
}

// The file is no longer the one at its path.
inline bool Moved(const Database& database) {
    int moved = 0;
    sqlite3_file_control(database.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    return moved != 0;
}

// What a result code means to those who must act on it, to be read behind the file's name.
struct Explanation {
    int code; // extended or primary
    const char* text;
};

// Of an extended code; the first that fits counts. nullptr when none does.
inline const char* FindExplanation(std::span<const Explanation> explanations, int code) {
    const auto fits = [code](const Explanation& known) {
        return known.code == code || known.code == (code & 0xFF);
    };
    const auto found = std::ranges::find_if(explanations, fits);
    return found == explanations.end() ? nullptr : found->text;
}

} // namespace tarnex
