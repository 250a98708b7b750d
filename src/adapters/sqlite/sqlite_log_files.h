#pragma once

#include "platform/log_files.h"

namespace tarnex {

// Log databases as SQLite files, and what others there are.
class SqliteLogFiles : public LogFiles {
  public:
    std::string Create(const std::string& path, const std::string& schema) override;
    std::string KindProblem(const std::string& path) override;
    std::string WritingProblem(const std::string& path) override;
    Result<std::unique_ptr<LogReader>> Open(const std::string& path) override;
};

// Of the library that is loaded: "3.40.1".
std::string SqliteVersion();

} // namespace tarnex
