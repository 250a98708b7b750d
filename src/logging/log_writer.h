#pragma once

#include "events/event_record.h"
#include "logging/operator_notices.h"
#include "platform/clock.h"
#include "platform/log_table.h"

namespace tarnex {

// Writes the lasting log: one row for each notification, command and response. Every writer tells
// by its result whether the row was stored; a row that was not is counted and stays lost. An
// operator is told of a database that fails, and of its recovery, under the topic "log".
class LogWriter {
  public:
    // All three must outlive the writer.
    LogWriter(Clock& clock, LogTable& table, OperatorNotices& notices);

    // (Re)opens the database; an empty path leaves the one in use, if any, as it is, and ends a
    // complaint about one that could not be opened.
    void Open(const Text& path);

    // A notification that tells of event.
    bool WriteLog(const Text& message, const EventRecord& event);
    // A command received: machine digit, two-digit service number, action digit.
    bool WriteCtrlLog(const Text& command);
    // A response sent.
    bool WriteResponseLog(const Text& message);

    // Rows lost since start.
    unsigned long LostRows() const { return lost_rows_; }

  private:
    LogRow NewRow(TextView direction) const;
    bool Store(const LogRow& row);
    bool Lose();
    void ForgetFailedOpening();
    void ReportTrouble(const std::string& recovery = "The log works again");

    Clock& clock_;
    LogTable& table_;
    OperatorNotices& notices_;
    int control_target_ = 0; // column 12 of the last command
    bool configured_ = false;
    bool in_use_ = false;      // one was opened, and rows go there
    std::string open_problem_; // of the last opening
    std::string row_problem_;  // of the last row
    bool trouble_told_ = false;
    unsigned long lost_rows_ = 0;
};

} // namespace tarnex
