#pragma once

#include "platform/message_history.h"

#include <memory>

namespace tarnex {

class HistoryConnection;

// The history in an SQLite file in WAL mode. It is opened when it is first needed, and anew when it
// is no longer the file at its path or could not be used. A change waits 50 ms at most for another
// program's lock, and after one that waited in vain none waits until one is stored.
class SqliteHistory : public MessageHistory {
  public:
    explicit SqliteHistory(std::string path);
    ~SqliteHistory() override;

    Result<std::vector<HistoryRow>> Rows(const HistoryQuery& query) override;
    std::string Store(const std::vector<HistoryChange>& changes) override;
    void KeepTo(int megabytes) override { megabytes_ = megabytes; }

  private:
    const std::string path_;
    int megabytes_ = 50;
    bool wait_for_locks_ = true;
    std::unique_ptr<HistoryConnection> connection_;
};

// Opens a history to read it while the service writes. The trouble follows the name of the file.
Result<std::unique_ptr<HistoryReader>> OpenSqliteHistory(const std::string& path);

} // namespace tarnex
