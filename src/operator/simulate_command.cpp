#include "operator/commands.h"
#include "operator/dry_run.h"
#include "operator/json_output.h"
#include "operator/moment.h"
#include "operator/text_output.h"

#include <algorithm>
#include <ostream>

namespace tarnex {

namespace {

// Work that takes longer than this shows how far it is.
constexpr auto kQuietStart = 1s;

CalendarTime StartOf(const OperatorWorld& world, const std::string& start) {
    if (start.empty()) {
        CalendarTime today = LocalNow(world);
        today.hour = today.minute = today.second = 0;
        return today;
    }
    const auto moment = ParseMoment(start);
    if (!moment || start.size() > 10)
        throw Failure(kExitUsage, "--start: \"" + start + "\" is no day; write it as 2024-05-06");
    return *moment;
}

// Says on standard error, to a person, which day it is.
class DaysDone {
  public:
    DaysDone(const OperatorWorld& world, int days)
        : world_(world), days_(days), begin_(world.now()) {}
    ~DaysDone() {
        if (shown_)
            world_.err << "\r\x1b[K" << std::flush;
    }
    void operator()(int day) {
        if (!world_.progress || world_.now() - begin_ < kQuietStart)
            return;
        shown_ = true;
        world_.err << "\rday " << day << " of " << days_ << std::flush;
    }

  private:
    const OperatorWorld& world_;
    const int days_;
    const std::chrono::system_clock::time_point begin_;
    bool shown_ = false;
};

struct Totals {
    std::size_t by_sms = 0; // alarms
    std::size_t queued = 0; // SMS
    std::size_t sent = 0;
    Duration longest_wait{};
};

Totals TotalsOf(const DryRunResult& result) {
    Totals totals;
    for (const AlarmOutcome& alarm : result.alarms) {
        totals.by_sms += alarm.sms_queued > 0;
        totals.queued += alarm.sms_queued;
        totals.sent += alarm.sms_sent;
        totals.longest_wait = std::max(totals.longest_wait, alarm.wait);
    }
    return totals;
}

long long Seconds(Duration duration) {
    return std::chrono::round<std::chrono::seconds>(duration).count();
}

Cell SmsCell(const AlarmOutcome& alarm) {
    if (alarm.sms_queued == 0)
        return {"no SMS: " + Joined(alarm.held_back), Colour::kWarning};
    const std::string sent =
        std::to_string(alarm.sms_sent) + " SMS in " + AgeText(Seconds(alarm.wait));
    if (alarm.sms_sent < alarm.sms_queued)
        return {sent + ", " + std::to_string(alarm.sms_queued - alarm.sms_sent) + " dropped",
                Colour::kBad};
    return {sent, Colour::kGood};
}

Cell MailCell(const AlarmOutcome& alarm) {
    if (!alarm.mail_queued)
        return "no mail";
    return alarm.mail_sent ? Cell("mail", Colour::kGood) : Cell("mail not sent", Colour::kBad);
}

void Print(const OperatorWorld& world, const DryRunResult& result, const SimulateOptions& options) {
    TextTable table;
    for (const AlarmOutcome& alarm : result.alarms)
        table.Add({MomentText(alarm.at), SmsCell(alarm), MailCell(alarm), ToUtf8(alarm.text)});
    table.Print(world);
    const Totals totals = TotalsOf(result);
    world.out << '\n'
              << Counted(std::ssize(result.alarms), "alarm") << " in "
              << Counted(options.days, "day") << " (seed " << options.seed << "): " << totals.by_sms
              << " by SMS, " << result.alarms.size() - totals.by_sms << " held back\n"
              << totals.sent << " SMS sent, " << totals.queued - totals.sent
              << " dropped; the longest wait was " << AgeText(Seconds(totals.longest_wait)) << '\n';
    if (result.other_sms > 0)
        world.out << result.other_sms << " more SMS about monitoring programs\n";
    world.out << Counted(std::int64_t(result.mails), "mail") << ", "
              << Counted(std::int64_t(result.log_rows), "log row");
    if (result.log_rows > result.alarms.size())
        world.out << ", " << result.log_rows - result.alarms.size()
                  << " of them about the monitoring program";
    world.out << '\n';
    for (const std::string& line : result.said)
        world.out << "the service would say: " << Printable(line) << '\n';
}

void PrintJson(const OperatorWorld& world, const DryRunResult& result,
               const SimulateOptions& options) {
    const Totals totals = TotalsOf(result);
    Json json{{"days", options.days},
              {"seed", options.seed},
              {"alarms", Json::array()},
              {"alarms_by_sms", totals.by_sms},
              {"sms_queued", totals.queued},
              {"sms_sent", totals.sent},
              {"sms_about_monitoring_programs", result.other_sms},
              {"longest_wait_seconds", Seconds(totals.longest_wait)},
              {"mails", result.mails},
              {"log_rows", result.log_rows},
              {"said", result.said}};
    for (const AlarmOutcome& alarm : result.alarms)
        json["alarms"].push_back({{"at", IsoTime(world, TimeOf(world, alarm.at))},
                                  {"text", ToUtf8(alarm.text)},
                                  {"sms_queued", alarm.sms_queued},
                                  {"sms_sent", alarm.sms_sent},
                                  {"wait_seconds", Seconds(alarm.wait)},
                                  {"held_back", alarm.held_back},
                                  {"mail_queued", alarm.mail_queued},
                                  {"mail_sent", alarm.mail_sent}});
    world.out << JsonText(json);
}

} // namespace

ExitStatus Simulate(OperatorWorld& world, const SimulateOptions& options) {
    const CalendarTime start = StartOf(world, options.start);
    const SettingsFile file(world);
    const std::vector<PlannedAlarm> alarms = PlanAlarms(options.days, options.seed);
    DryRunResult result;
    {
        DaysDone progress(world, options.days);
        result = RunDry(file, start, options.days, alarms, std::ref(progress));
    }
    if (result.ended)
        throw Failure(kExitData, "with these settings the service ends at once: "
                                 "\"tarnexctl settings check\" says why");
    if (options.json)
        PrintJson(world, result, options);
    else
        Print(world, result, options);
    return kExitDone;
}

} // namespace tarnex
