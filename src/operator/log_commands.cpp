#include "operator/commands.h"
#include "operator/file_access.h"
#include "operator/json_output.h"
#include "operator/moment.h"
#include "operator/settings_file.h"
#include "operator/text_output.h"
#include "platform/file_path.h"

#include <array>
#include <ostream>

namespace tarnex {

namespace {

constexpr Duration kLogPollPeriod = 1s;

using namespace log_column;
constexpr std::array<const char*, log_column::kCount> kColumnNames = {
    "number", "date",   "time",   "direction", "source",  "message", "event",
    "state",  "action", "by_sms", "by_mail",   "machine", "detail"};
static_assert(kColumnNames.back());

std::string PathOf(const OperatorWorld& world, const std::string& path) {
    if (!path.empty())
        return path;
    const std::string configured = ToUtf8(SettingsFile(world).Value("log-database"_setting));
    if (configured.empty())
        throw Failure(kExitData, "the settings name no log database: name a file, or set it with "
                                 "\"tarnexctl settings set log-database FILE\"");
    return configured;
}

// The file in which the path of the database stands; "" when a person gave it.
std::string NamedIn(const OperatorWorld& world, const std::string& path) {
    return path.empty() ? world.settings_path : "";
}

std::string ReadSchema(const OperatorWorld& world, const std::string& path) {
    if (const std::error_code problem = ReadingProblem(path))
        throw CannotRead(world.words, "schema " + path, problem, "name another with --schema");
    return ReadWholeFile(path);
}

std::string Field(const StoredLogRow& row, std::size_t column) {
    return Printable(row.columns[column].value_or(""));
}

std::string Ways(const StoredLogRow& row) {
    const bool sms = Field(row, kBySMS) == "Yes";
    const bool mail = Field(row, kByEmail) == "Yes";
    return sms && mail ? "SMS+mail" : sms ? "SMS" : mail ? "mail" : "";
}

// Fixed widths: the rows to come are not known.
std::string LineOf(const StoredLogRow& row) {
    return Padded(Field(row, kNumber), 6) + Padded(Field(row, kDate), 10) +
           Padded(Field(row, kTime), 8) + Padded(Field(row, kDirection), 3) +
           Padded(Field(row, kSource), 5) + Padded(Ways(row), 8) + Field(row, kMessage) + '\n';
}

// null where the row has no such moment.
Json AtOf(const OperatorWorld& world, const StoredLogRow& row) {
    const std::string time = row.columns[kTime].value_or("");
    auto local = ParseMoment(row.columns[kDate].value_or("") + " " + time.substr(0, 5));
    if (!local || time.size() != 8)
        return {};
    local->second = int(LeadingNumber(FromUtf8(time.substr(6))));
    return IsoTime(world, TimeOf(world, *local));
}

Json ValueOf(const StoredLogRow& row, std::size_t column) {
    const auto& text = row.columns[column];
    if (!text)
        return {};
    if ((column == kBySMS || column == kByEmail) && (*text == "Yes" || *text == "No"))
        return *text == "Yes";
    if (column == kMemoOrTarget && !row.columns[kBySMS]) // of a command its target
        return NumberOr(*text, *text);
    return *text;
}

std::string JsonOf(const OperatorWorld& world, const StoredLogRow& row) {
    Json json{{"number", row.id}, {"at", AtOf(world, row)}};
    for (std::size_t i = kDirection; i < kCount; ++i)
        json[kColumnNames[i]] = ValueOf(row, i);
    return JsonText(json, -1);
}

// The rows of one file, and of those that take its place.
class Tail {
  public:
    Tail(const OperatorWorld& world, const std::string& path, bool json)
        : world_(world), path_(path), json_(json) {
        if (const std::error_code problem = ReadingProblem(path_))
            throw CannotRead(world.words, "log database " + path_, problem,
                             "make it with \"tarnexctl log create\", or name another");
        auto log = world.logs.Open(path_);
        if (!log)
            throw Unreadable(log.TroubleText());
        reader_ = std::move(*log);
    }

    void ShowLast(int count) {
        if (count > 0)
            Show(reader_->Last(count));
        else if (const auto newest = reader_->Last(1); newest && !newest->empty())
            last_id_ = newest->back().id;
    }

    void ShowNew() {
        ShowFurther();
        if (!reader_->Moved())
            return;
        auto replacement = world_.logs.Open(path_);
        if (!replacement)
            return; // not there yet
        reader_ = std::move(*replacement);
        last_id_ = 0;
        ShowFurther();
    }

  private:
    void ShowFurther() {
        const auto rows = reader_->After(last_id_);
        if (rows || !reader_->LockedOut()) // else next time
            Show(rows);
    }

    Failure Unreadable(const std::string& problem) const {
        return {kExitIo, "the log database " + path_ + " " + problem};
    }

    void Show(const std::optional<std::vector<StoredLogRow>>& rows) {
        if (!rows)
            throw Unreadable(reader_->Problem());
        for (const StoredLogRow& row : *rows) {
            world_.out << (json_ ? JsonOf(world_, row) : LineOf(row));
            last_id_ = row.id;
        }
        world_.out.flush();
    }

    const OperatorWorld& world_;
    const std::string path_;
    const bool json_;
    std::unique_ptr<LogReader> reader_;
    std::int64_t last_id_ = 0;
};

} // namespace

ExitStatus LogCreate(OperatorWorld& world, const std::string& path, const std::string& schema) {
    const std::string file = PathOf(world, path);
    const std::string sql =
        ReadSchema(world, schema.empty() ? FileIn(world.data_folder, "log-schema.sql") : schema);
    const auto acting = ActForOwner(world, file, NamedIn(world, path));
    const std::string problem = world.logs.Create(file, sql);
    if (!problem.empty())
        throw Failure(kExitCannotCreate, problem);
    world.out << "made " << Printable(file) << '\n';
    if (!world.owners.BelongsToFolderOwner(file))
        world.err << "tarnexctl: warning: " << Printable(file)
                  << " does not belong to the owner of its folder; see that the user of the "
                     "service may write to it\n";
    return kExitDone;
}

ExitStatus LogTail(OperatorWorld& world, const TailOptions& options) {
    const std::string path = PathOf(world, options.path);
    // Reading makes files beside it.
    const auto acting = ActForOwner(world, path, NamedIn(world, options.path));
    Tail tail(world, path, options.json);
    tail.ShowLast(options.lines);
    while (!options.once && world.out && world.pause(kLogPollPeriod))
        tail.ShowNew();
    return kExitDone;
}

} // namespace tarnex
