#include "adapters/sqlite/any_log_table.h"

#include "adapters/sqlite/sqlite_log_table.h"
#include "adapters/system/access_log.h"
#include "platform/file_path.h"

#include <fstream>
#include <utility>

namespace tarnex {

bool AnyLogTable::IsAccess(const std::string& path) const {
    return IsAccessDatabase(path) || (is_access_ && path == path_ && !std::ifstream(ToPath(path)));
}

std::string AnyLogTable::Open(const Text& path) {
    const std::string file = ToUtf8(path);
    const bool access = IsAccess(file);
    if (table_ && access == is_access_) {
        path_ = file;
        return table_->Open(path);
    }
    if (access)
        if (const std::string trouble = AccessTrouble(); !trouble.empty())
            return "The log database " + file + " " + trouble + ".";
    auto table = access ? MakeAccessLogTable() : std::make_unique<SqliteLogTable>();
    std::string problem = table->Open(path);
    if (problem.empty()) {
        table_ = std::move(table);
        is_access_ = access;
        path_ = file;
    }
    return problem;
}

std::string AnyLogTable::Append(const LogRow& row) {
    return table_ ? table_->Append(row) : "No log database is open.";
}

} // namespace tarnex
