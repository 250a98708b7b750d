#pragma once

#include "platform/log_table.h"

#include <memory>

namespace tarnex {

// The log table in an SQLite file that is there already; its journal mode stays as it is. A row
// waits 50 ms at most for another program's lock, and after one that waited in vain no row waits,
// until one is stored or the file is opened again.
class SqliteLogTable : public LogTable {
  public:
    SqliteLogTable();
    ~SqliteLogTable() override;

    std::string Open(const Text& path) override;
    std::string Append(const LogRow& row) override;

  private:
    class Connection;
    std::unique_ptr<Connection> connection_;
};

} // namespace tarnex
