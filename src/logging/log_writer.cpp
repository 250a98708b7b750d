#include "logging/log_writer.h"

#include "platform/calendar_text.h"
#include "settings/setting_table.h"

namespace tarnex {

namespace {

std::string NotConfigured() {
    return "No log database is configured, so log rows are lost: make one with "
           "\"tarnexctl log create FILE\" and set " +
           NameOf("log-database"_setting) + " to it.";
}

using namespace log_column;

Text YesOrNo(const Text& flag) {
    return flag == u"1" ? u"Yes" : u"No";
}

// The characters from a position on, fewer or none where the text ends before.
TextView Part(TextView text, std::size_t at, std::size_t count) {
    return at < text.size() ? text.substr(at, count) : TextView();
}

// A number out of range is in no table's range either.
int Index(TextView text) {
    return LeadingInt16(text).value_or(-1);
}

} // namespace

LogWriter::LogWriter(Clock& clock, LogTable& table, OperatorNotices& notices)
    : clock_(clock), table_(table), notices_(notices) {}

void LogWriter::Open(const Text& path) {
    if (path.empty()) {
        ForgetFailedOpening();
        return;
    }
    const bool was_open = configured_ && open_problem_.empty();
    configured_ = true;
    open_problem_ = table_.Open(path);
    in_use_ = in_use_ || open_problem_.empty();
    // While the database stays open, only a stored row shows that rows can be stored again.
    if (!was_open && open_problem_.empty())
        row_problem_.clear();
    ReportTrouble();
}

void LogWriter::ForgetFailedOpening() {
    if (open_problem_.empty())
        return;
    open_problem_.clear();
    configured_ = in_use_;
    if (!in_use_)
        row_problem_.clear();
    ReportTrouble(in_use_ ? "The log stays where it was" : "The settings name no log any more");
}

bool LogWriter::WriteLog(const Text& message, const EventRecord& event) {
    const auto service = ServiceName(event.ServiceNo);
    const auto state = StateName(Index(event.StatusNo));
    const auto action = ActionName(event.AutoNo);
    if (!service || !state || !action)
        return Lose();
    LogRow row = NewRow(u"Out");
    row[kSource] = ToText(event.MachineNo) + u"Nex";
    row[kMessage] = message;
    row[kEventName] = Text(*service);
    row[kState] = Text(*state);
    row[kAction] = Text(*action);
    row[kBySMS] = YesOrNo(event.SMSableNo);
    row[kByEmail] = YesOrNo(event.EmailableNo);
    row[kMachineName] = event.MachineName;
    row[kMemoOrTarget] = event.Memo;
    return Store(row);
}

bool LogWriter::WriteCtrlLog(const Text& command) {
    const TextView machine = Part(command, 0, 1);
    control_target_ = Index(machine) - 1;
    const auto service = ServiceName(Index(Part(command, 1, 2)));
    const auto action = CommandName(Index(Part(command, command.size() - 1, 1)));
    if (!service || !action)
        return Lose();
    LogRow row = NewRow(u"In");
    row[kSource] = Text(machine) + u"Nex";
    row[kMessage] = command;
    row[kEventName] = Text(*service);
    row[kState] = Text();
    row[kAction] = Text(*action);
    row[kMachineName] = Text();
    row[kMemoOrTarget] = control_target_;
    return Store(row);
}

bool LogWriter::WriteResponseLog(const Text& message) {
    LogRow row = NewRow(u"Out");
    row[kSource] = u"Nex1";
    row[kMessage] = message;
    row[kEventName] = Text();
    row[kState] = Text();
    row[kAction] = Text();
    row[kMachineName] = Text();
    row[kMemoOrTarget] = control_target_;
    return Store(row);
}

LogRow LogWriter::NewRow(TextView direction) const {
    LogRow row;
    row[kDate] = DateText(clock_.Calendar());
    row[kTime] = TimeText(clock_.Calendar());
    row[kDirection] = Text(direction);
    return row;
}

bool LogWriter::Store(const LogRow& row) {
    row_problem_ = configured_ ? table_.Append(row) : NotConfigured();
    const bool stored = row_problem_.empty();
    if (!stored)
        Lose();
    ReportTrouble();
    return stored;
}

bool LogWriter::Lose() {
    ++lost_rows_;
    return false;
}

// A database that cannot be opened is the reason why its rows fail, so it is what is told.
void LogWriter::ReportTrouble(const std::string& recovery) {
    const std::string& trouble = open_problem_.empty() ? row_problem_ : open_problem_;
    if (trouble.empty() && !trouble_told_)
        return; // as with nearly every row: the words below are not put together in vain
    trouble_told_ = !trouble.empty();
    notices_.Report("log", trouble,
                    recovery + "; rows lost since the start: " + std::to_string(lost_rows_) + ".");
}

} // namespace tarnex
