#include "adapters/system/access_log.h"

namespace tarnex {

std::string AccessTrouble() {
    return "is an Access database, which this system can neither read nor write: make an SQLite "
           "database with \"tarnexctl log create FILE\" and name that (setting \"log-database\")";
}

std::unique_ptr<LogTable> MakeAccessLogTable() {
    return nullptr;
}

std::string AccessWritingProblem(const std::string& path) {
    return "The log database " + path + " " + AccessTrouble() + ".";
}

Result<std::unique_ptr<LogReader>> OpenAccessLog(const std::string& /*path*/) {
    return Trouble{AccessTrouble()};
}

} // namespace tarnex
