#include "history/history_writer.h"
#include "operator/commands.h"
#include "operator/history_file.h"
#include "operator/json_output.h"
#include "operator/moment.h"
#include "operator/text_output.h"
#include "simulator/words.h"

#include <ostream>
#include <set>
#include <sstream>

namespace tarnex {

namespace {

constexpr Duration kHistoryPollPeriod = 1s;
constexpr int kUsualRows = 20;
// That the clock of the system can count.
constexpr int kFirstYear = 1970;
constexpr int kLastYear = 2200;
constexpr std::size_t kMostIdsAtOnce = 200; // the service does nothing else meanwhile

using std::chrono::system_clock;

system_clock::time_point At(std::int64_t ms) {
    return system_clock::time_point(std::chrono::milliseconds(ms));
}

// "2024-05-06", "2024-05-06 22:30", "90min", "2h" or "3d" as the time that it means.
std::int64_t SinceOf(const OperatorWorld& world, const std::string& text) {
    if (text.empty())
        return 0;
    const auto moment = ParseMoment(text);
    if (moment && moment->year >= kFirstYear && moment->year <= kLastYear)
        return UnixMs(TimeOf(world, *moment));
    std::istringstream age(text);
    long long number = 0;
    std::string unit;
    if (age >> number >> unit && number >= 0 && number < 100'000 && age.eof())
        for (const auto& [name, length] :
             {std::pair("min", Duration(1min)), {"h", Duration(1h)}, {"d", Duration(24h)}})
            if (unit == name)
                return UnixMs(world.now() - number * length);
    throw Failure(kExitData,
                  "--since: \"" + text +
                      "\" is no time such as 2024-05-06, \"2024-05-06 22:30\", 90min, 2h or 3d");
}

bool IsMessage(const HistoryRow& row) {
    return row.kind == "SMS" || row.kind == "mail";
}

bool Waits(const HistoryRow& row) {
    return IsMessage(row) && row.fate.empty();
}

std::string FateText(const HistoryRow& row) {
    if (!IsMessage(row))
        return "";
    if (row.fate.empty())
        return "waits";
    if (row.again_as != 0)
        return "again " + std::to_string(row.again_as);
    return row.fate + (row.fate != FateWord(Fate::kSent) && MaybeSent(row) ? "?" : "");
}

// Fixed widths: the rows to come are not known.
std::string LineOf(const OperatorWorld& world, const HistoryRow& row) {
    const CalendarTime at = world.local_time(At(row.at));
    return Padded(std::to_string(row.id), 6) +
           Padded(ToUtf8(DateText(at) + u" " + TimeText(at)), 19) + Padded(row.kind, 4) +
           Padded(Printable(row.recipient), 14) + Padded(FateText(row), 11) +
           Printable(row.text + (row.reason.empty() ? "" : " (" + row.reason + ")")) + '\n';
}

Json AttemptsOf(const OperatorWorld& world, const HistoryRow& row) {
    Json attempts = Json::array();
    std::istringstream lines(row.attempts);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t blank = line.find(' ');
        const std::string result = blank == line.npos ? "" : line.substr(blank + 1);
        attempts.push_back({{"at", IsoTime(world, At(std::strtoll(line.c_str(), nullptr, 10)))},
                            {"result", result.empty() ? Json() : Json(result)}});
    }
    return attempts;
}

std::string JsonOf(const OperatorWorld& world, const HistoryRow& row) {
    const auto id_or_null = [](std::int64_t id) { return id == 0 ? Json() : Json(id); };
    const auto text_or_null = [](const std::string& text) {
        return text.empty() ? Json() : Json(text);
    };
    Json json{{"id", row.id}, {"at", IsoTime(world, At(row.at))}, {"kind", row.kind}};
    if (row.kind == "signal") {
        json["signal"] = std::strtol(row.text.c_str(), nullptr, 10);
    } else if (row.kind == "unit") {
        json["state"] = row.text;
    } else {
        json["recipient"] = row.recipient;
        json["text"] = row.text;
        json["record"] = text_or_null(row.record);
        json["fate"] = row.fate.empty() ? "waits" : row.fate;
        json["reason"] = text_or_null(row.reason);
        json["ended_at"] =
            row.fate.empty() || row.ended == 0 ? Json() : Json(IsoTime(world, At(row.ended)));
        json["attempts"] = AttemptsOf(world, row);
        json["again_of"] = id_or_null(row.again_of);
        json["again_as"] = id_or_null(row.again_as);
        json["maybe_sent"] = row.maybe_sent + MaybeSent(row);
    }
    return JsonText(json, -1);
}

// Shows the rows that the options ask for, then new ones and each whose fate has changed.
class HistoryOutput {
  public:
    HistoryOutput(const OperatorWorld& world, const HistoryOptions& options)
        : world_(world), file_(world), options_(options), since_(SinceOf(world, options.since)) {}

    void ShowPresent() {
        HistoryQuery wanted = Wanted();
        wanted.last = options_.lines > 0                  ? options_.lines
                      : since_ == 0 && !options_.not_sent ? kUsualRows
                                                          : 0;
        if (options_.follow) {
            for (const HistoryRow& newest : file_.Rows({.last = 1}))
                last_id_ = newest.id;
            for (const HistoryRow& row : file_.Rows({.since = since_, .waiting = true}))
                waiting_.insert(row.id);
        }
        for (const HistoryRow& row : file_.Rows(wanted))
            if (!options_.follow || row.id <= last_id_)
                Show(row);
        world_.out.flush();
    }

    void ShowChanges() {
        std::set<std::int64_t> changed = waiting_;
        if (!waiting_.empty())
            for (const HistoryRow& row : file_.Rows({.waiting = true}))
                changed.erase(row.id);
        const std::vector<HistoryRow> added =
            file_.Rows({.after = last_id_, .since = since_, .no_signal = !options_.json});
        for (const HistoryRow& row : added) {
            last_id_ = row.id;
            if (row.again_of != 0)
                changed.insert(row.again_of);
            if (Waits(row))
                waiting_.insert(row.id);
            else if (options_.not_sent)
                changed.insert(row.id); // if it is one of those
        }
        for (const std::int64_t id : changed)
            ShowAgain(id);
        for (const HistoryRow& row : added)
            if (!options_.not_sent)
                Show(row);
        world_.out.flush();
    }

  private:
    HistoryQuery Wanted() const {
        return {.since = since_, .not_sent = options_.not_sent, .no_signal = !options_.json};
    }

    void ShowAgain(std::int64_t id) {
        waiting_.erase(id);
        HistoryQuery it = Wanted();
        it.id = id;
        for (const HistoryRow& row : file_.Rows(it))
            Show(row);
    }

    void Show(const HistoryRow& row) {
        if (!Waits(row))
            waiting_.erase(row.id);
        world_.out << (options_.json ? JsonOf(world_, row) : LineOf(world_, row));
    }

    const OperatorWorld& world_;
    HistoryFile file_;
    const HistoryOptions& options_;
    const std::int64_t since_;
    std::int64_t last_id_ = 0;       // what follows it is new
    std::set<std::int64_t> waiting_; // up to that one
};

} // namespace

ExitStatus ShowHistory(OperatorWorld& world, const HistoryOptions& options) {
    HistoryOutput output(world, options);
    output.ShowPresent();
    while (options.follow && world.out && world.pause(kHistoryPollPeriod))
        output.ShowChanges();
    return kExitDone;
}

ExitStatus Resend(OperatorWorld& world, const std::vector<std::string>& ids, bool not_sent) {
    if (ids.empty() != not_sent)
        throw Failure(kExitUsage, "name messages by the ids that \"tarnexctl history\" shows, or "
                                  "all that were not sent by --unsent");
    for (const std::string& id : ids)
        if (ReadNumber<std::int64_t>(id).value_or(0) <= 0)
            throw Failure(kExitUsage,
                          "\"" + id + "\" is no id as \"tarnexctl history\" shows them");
    bool all_queued = true;
    std::size_t asked = 0;
    do {
        std::string request = "resend";
        const std::size_t end = std::min(ids.size(), asked + kMostIdsAtOnce);
        for (; asked < end; ++asked)
            request += " " + ids[asked];
        const ServiceAnswer answer = world.ask_service(request);
        if (!answer.trouble.empty())
            throw Failure(answer.forbidden ? kExitNoRights : kExitUnavailable, answer.trouble);
        world.out << answer.text << std::flush;
        std::istringstream lines(answer.text);
        for (std::string line; std::getline(lines, line);)
            all_queued &= line.ends_with("is queued again") || line.starts_with("nothing is left");
    } while (asked < ids.size());
    return all_queued ? kExitDone : kExitFailed;
}

} // namespace tarnex
