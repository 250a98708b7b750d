#include "operator/dry_run.h"

#include "mail/mail_settings.h"
#include "mail/server_address.h"
#include "operator/record_explanation.h"
#include "settings/load_settings.h"
#include "simulator/simulated_monitor.h"
#include "simulator/system/system_in_memory.h"

#include <algorithm>
#include <set>

namespace tarnex {

namespace {

// Time for the SMS of the last alarms to leave.
constexpr Duration kRunOut = 1h;

class DryRun {
  public:
    DryRun(const SettingsFile& file, const CalendarTime& start)
        : file_(file), settings_(ReadSettings(file.Document(), {}).settings),
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
        const std::set<std::string> said(system_.said.begin(), system_.said.end());
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
        const auto server = ParseServerAddress(ReadMailSettings(file_.Document()).SmtpServer);
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

DryRunResult RunDry(const SettingsFile& file, const CalendarTime& start, int days,
                    const std::vector<PlannedAlarm>& alarms,
                    const std::function<void(int day)>& progress) {
    return DryRun(file, start).Run(days, alarms, progress);
}

} // namespace tarnex
