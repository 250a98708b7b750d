#include "operator/dry_run.h"

#include "mail/server_address.h"
#include "operator/record_explanation.h"
#include "settings/load_settings.h"
#include "simulator/simulated_monitor.h"
#include "simulator/system/system_in_memory.h"

#include <algorithm>
#include <random>
#include <set>

namespace tarnex {

namespace {

enum State { kAbnormal = 1, kNormal = 2, kLost = 3 };

struct Disturbance {
    int service;
    State state;
    int action;
    int per_month;    // how often, in 30 days
    int shortest;     // min until all is well again
    int longest;      // min; 0: nobody reports that it is over
    const char* memo; // a "#" becomes a figure
};

// clang-format off
constexpr Disturbance kDisturbances[] = {
    // service             state      action month shortest longest memo
    { 3 /* CPU */,         kAbnormal, 0,     24,    5,      90,    "9#%"},
    { 2 /* memory */,      kAbnormal, 0,     12,   15,     180,    "9#%"},
    {10 /* ping 1 */,      kLost,     0,      8,    1,      30,    "192.0.2.1#"},
    {30 /* web */,         kAbnormal, 1,      8,    2,       6,    "www.example.com"},
    {33 /* smtp */,        kAbnormal, 0,      4,    5,     240,    "mail.example.com"},
    {50 /* storage */,     kAbnormal, 0,      4,    0,       0,    "/srv 9#%"},
    {20 /* file */,        kAbnormal, 4,      4,    0,       0,    "/srv/orders.db"},
    { 1 /* ended badly */, kAbnormal, 0,      1,    0,       0,    ""},
};
// clang-format on

constexpr int kMinutesADay = 24 * 60;
constexpr int kMonth = 30;
// Nothing happens while the service finds the unit and sets it up.
constexpr int kFirstMinute = 5;

class Planner {
  public:
    explicit Planner(std::uint64_t seed) : random_(seed) {}

    std::vector<PlannedAlarm> Plan(int days) {
        for (const Disturbance& disturbance : kDisturbances)
            for (int minute = kFirstMinute; minute < days * kMinutesADay; ++minute)
                if (Below(kMonth * kMinutesADay) < disturbance.per_month)
                    minute = Add(disturbance, minute);
        std::ranges::stable_sort(alarms_, {}, &PlannedAlarm::at);
        std::erase_if(alarms_, [days](const PlannedAlarm& a) { return a.at >= days * 24h; });
        return std::move(alarms_);
    }

  private:
    // When it is over.
    int Add(const Disturbance& disturbance, int minute) {
        MonitorEvent event{.service = disturbance.service,
                           .state = disturbance.state,
                           .action = disturbance.action,
                           .machine_name = u"server-1",
                           .memo = Memo(disturbance.memo)};
        Put(minute, event);
        if (disturbance.longest == 0)
            return minute;
        minute += disturbance.shortest + Below(disturbance.longest - disturbance.shortest);
        event.state = kNormal;
        event.action = 0;
        Put(minute, event);
        return minute;
    }

    void Put(int minute, const MonitorEvent& event) {
        alarms_.push_back({std::chrono::minutes(minute) + std::chrono::seconds(Below(60)), event});
    }

    Text Memo(const char* pattern) {
        Text memo;
        for (const char c : std::string_view(pattern))
            memo += c == '#' ? ToText(Below(10)) : Text(1, char16_t(c));
        return memo;
    }

    // Without the library's distributions, which may differ from one library to the next.
    int Below(int limit) { return int(random_() % std::uint64_t(limit)); }

    std::mt19937_64 random_;
    std::vector<PlannedAlarm> alarms_;
};

// Time for the SMS of the last alarms to leave.
constexpr Duration kRunOut = 1h;

class DryRun {
  public:
    DryRun(const SettingsFile& file, const CalendarTime& start)
        : file_(file), settings_(ReadSettings(file.Document()).settings),
          system_(file.Content(), file.Encoding(), start),
          monitor_(system_.clock, system_.network, system_.code_page, {.name = u"monitor"}) {
        ServeMail();
        system_.unit.OnSent([this](const SentSms& sms) { NoteSent(sms); });
        mail_sink_.OnMail = [this](const ReceivedMail& mail) { NoteMail(mail); };
    }

    DryRunResult Run(int days, const std::vector<PlannedAlarm>& alarms,
                     const std::function<void(int day)>& progress) {
        system_.StartService();
        system_.clock.RunFor(1s);
        result_.ended = system_.ended_at.has_value();
        if (result_.ended)
            return std::move(result_);
        monitor_.Start();
        for (const PlannedAlarm& alarm : alarms)
            system_.clock.CallAfter(alarm.at - system_.clock.Now(),
                                    [this, &alarm] { Raise(alarm.event); });
        for (int day = 1; day <= days; ++day) {
            progress(day);
            system_.clock.RunTo(day * 24h);
            EndDay();
        }
        system_.clock.RunFor(kRunOut);
        EndDay();
        const std::set<std::string> said(system_.needs_somebody.begin(),
                                         system_.needs_somebody.end());
        result_.said.assign(said.begin(), said.end());
        return std::move(result_);
    }

  private:
    // An SMS that was queued and has not been sent yet.
    struct Expected {
        std::size_t alarm; // index
        int recipient;
        Text text;
        Duration queued_at;
    };

    // Keeps the memory of a long run small: some settings make thousands of rows and lines a day.
    void EndDay() {
        result_.log_rows += system_.log.Rows.size();
        system_.log.Rows.clear();
        system_.echoed.clear();
        mail_sink_.Mails.clear();
    }

    void ServeMail() {
        const auto server = ParseServerAddress(ReadSettings(file_.Document()).mail.SmtpServer);
        if (server)
            system_.tcp.Serve(ToUtf8(server->host), server->port, mail_sink_);
    }

    void Raise(const MonitorEvent& event) {
        const CalendarTime at = system_.clock.Calendar();
        const NotificationPlan plan = Plan(ParsedRecord(MakeEventRecord(event)), settings_, at);
        AlarmOutcome outcome{.at = at,
                             .text = plan.text,
                             .held_back = {},
                             .sms_queued = plan.SMSCount(),
                             .mail_queued = plan.mail.has_value()};
        for (const auto& number : plan.numbers)
            if (number.Gets())
                Expect(plan, number.recipient - u'0');
            else if (outcome.sms_queued == 0)
                for (const std::string& reason : HeldBackWords(number))
                    if (std::ranges::count(outcome.held_back, reason) == 0)
                        outcome.held_back.push_back(reason);
        result_.alarms.push_back(std::move(outcome));
        monitor_.SendEvent(event);
    }

    void Expect(const NotificationPlan& plan, int recipient) {
        for (int rep = 0; rep < plan.repetitions; ++rep)
            for (const Text& piece : plan.pieces)
                expected_.push_back({.alarm = result_.alarms.size(),
                                     .recipient = recipient,
                                     .text = piece,
                                     .queued_at = system_.clock.Now()});
    }

    void NoteMail(const ReceivedMail& mail) {
        ++result_.mails;
        const auto sent = std::ranges::find_if(result_.alarms, [&](const AlarmOutcome& alarm) {
            return alarm.mail_queued && !alarm.mail_sent &&
                   mail.content.find(system_.code_page.Encode(alarm.text)) != std::string::npos;
        });
        if (sent != result_.alarms.end())
            sent->mail_sent = true;
    }

    void NoteSent(const SentSms& sms) {
        const auto sent = std::ranges::find_if(expected_, [&](const Expected& expected) {
            return expected.recipient == sms.number_index && expected.text == sms.text;
        });
        if (sent == expected_.end()) {
            ++result_.other_sms;
            return;
        }
        AlarmOutcome& outcome = result_.alarms[sent->alarm];
        ++outcome.sms_sent;
        outcome.wait = system_.clock.Now() - sent->queued_at;
        expected_.erase(sent);
    }

    const SettingsFile& file_;
    const Settings settings_;
    DryRunResult result_;
    std::vector<Expected> expected_;
    MailSink mail_sink_;
    SystemInMemory system_;
    Monitor monitor_;
};

} // namespace

std::vector<PlannedAlarm> PlanAlarms(int days, std::uint64_t seed) {
    return Planner(seed).Plan(days);
}

DryRunResult RunDry(const SettingsFile& file, const CalendarTime& start, int days,
                    const std::vector<PlannedAlarm>& alarms,
                    const std::function<void(int day)>& progress) {
    return DryRun(file, start).Run(days, alarms, progress);
}

} // namespace tarnex
