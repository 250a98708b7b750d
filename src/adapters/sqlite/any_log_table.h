#pragma once

#include "platform/log_table.h"

#include <memory>
#include <string>

namespace tarnex {

// The log table in a file of either kind: an SQLite file, or an Access database where this machine
// can use one.
class AnyLogTable : public LogTable {
  public:
    std::string Open(const Text& path) override;
    std::string Append(const LogRow& row) override;

  private:
    // Whether the file is an Access database, or was one when that could be seen.
    bool IsAccess(const std::string& path) const;

    std::unique_ptr<LogTable> table_;
    bool is_access_ = false;
    std::string path_; // that table_ was last to open
};

} // namespace tarnex
