#include "events/notification_plan.h"
#include "notify/control_link.h"
#include "operator/commands.h"
#include "operator/moment.h"
#include "operator/record_explanation.h"
#include "operator/settings_file.h"
#include "operator/status_reading.h"
#include "operator/text_output.h"
#include "simulator/monitor_messages.h"

#include <ostream>

namespace tarnex {

namespace {

constexpr Duration kStatusCheckPause = 1s;
constexpr int kWholeMachine = 90; // of the services
constexpr int kNormalState = 2;   // of the states: nobody is alarmed by it
constexpr const char* kEveryAddress = "0.0.0.0";

long long CounterOf(const Json& part, const char* name) {
    return part.at(name).get<long long>();
}

// What the service has done by now with all its messages.
struct Standing {
    explicit Standing(const Json& status)
        : events(CounterOf(status.at("events"), "dispatched")), sms(status.at("sms")),
          mail(status.at("mail")), lost_rows(CounterOf(status.at("log"), "lost_rows")),
          unit(status.at("unit").at("state")) {}

    long long Sent() const { return CounterOf(sms, "sent"); }
    long long NotSent() const {
        return CounterOf(sms, "given_up") + CounterOf(sms, "dropped_by_full_queue") +
               CounterOf(sms, "dropped_by_reset");
    }
    long long Waiting() const { return CounterOf(sms, "queued") + !sms.at("held").is_null(); }
    long long MailsWaiting() const {
        return CounterOf(mail, "queued") + mail.at("in_flight").get<bool>();
    }
    long long MailsSent() const { return CounterOf(mail, "sent"); }

    long long events;
    Json sms;
    Json mail;
    long long lost_rows;
    std::string unit;
};

// One alarm and its way out. The queues are in order, so what waited before is done first.
class Trial {
  public:
    Trial(OperatorWorld& world, Duration limit)
        : world_(world), limit_(limit), settings_(world), before_(Now()) {}

    ExitStatus Run() {
        if (before_.unit != PhaseWord(UnitPhase::kReady))
            Say("the unit is " + before_.unit + ", so SMS wait until it is ready");
        const RecordExplanation plan = Send();
        for (const auto& sms : plan.sms)
            if (!sms.taken)
                Say("no SMS to number " + std::to_string(sms.recipient) + ": " +
                    Joined(sms.reasons));
        if (NoMailServer())
            Say("no mail: no server is set");
        else if (!plan.mail.taken)
            Say("no mail: " + Joined(plan.mail.reasons));
        sms_ = (long long)plan.plan.SMSCount();
        mails_ = plan.mail.taken;
        Follow();
        return Judge();
    }

  private:
    Standing Now() {
        const StatusReading state = ReadStatusFile(world_);
        if (!state.running)
            throw Failure(kExitFailed, state.absence);
        return Standing(state.status);
    }

    void Say(const std::string& what) {
        const auto passed = std::chrono::floor<std::chrono::seconds>(waited_).count();
        const std::string time = std::to_string(passed) + " s";
        world_.out << std::string(time.size() < 6 ? 6 - time.size() : 0, ' ') << time << "  "
                   << Printable(what) << std::endl;
    }

    bool NoMailServer() const { return Trim(settings_.Value("mail-server"_setting)).empty(); }

    RecordExplanation Send() {
        const MonitorEvent event{.service = kWholeMachine,
                                 .state = kNormalState,
                                 .by_mail = !NoMailServer(),
                                 .memo = u"TarnexComm test"};
        std::string address = settings_.AtStart().bind_address;
        if (address == kEveryAddress)
            address = "127.0.0.1";
        const std::string trouble =
            world_.send_datagram({address, ControlLink::kFirstPort},
                                 settings_.Encoding().Encode(MakeEventMessage(event)));
        if (!trouble.empty())
            throw Failure(kExitFailed, "the alarm cannot be given to the service at " + address +
                                           ": " + trouble);
        return Explain(settings_, MakeEventRecord(event), LocalNow(world_));
    }

    bool Wait() {
        waited_ += kStatusCheckPause;
        return waited_ <= limit_ && world_.pause(kStatusCheckPause);
    }

    void Follow() {
        Standing last = before_;
        do {
            const Standing now = Now();
            if (now.events > before_.events && last.events == before_.events)
                Say("the service has taken the alarm" +
                    std::string(now.lost_rows > before_.lost_rows ? "; its row in the log is lost"
                                                                  : " and logged it"));
            const long long ahead = std::max(0LL, SmsDone(now) - before_.Waiting());
            if (ahead > sms_done_) {
                const bool not_sent = now.NotSent() > last.NotSent();
                sms_lost_ = sms_lost_ || not_sent;
                Say(std::to_string(std::min(ahead, sms_)) + " of " + Counted(sms_, "SMS") +
                    (not_sent ? " done, but one was not sent: given up or dropped" : " sent"));
            }
            sms_done_ = std::max(sms_done_, ahead);
            if (now.MailsSent() - before_.MailsSent() > before_.MailsWaiting() && mails_ > 0 &&
                !mail_done_) {
                mail_done_ = true;
                Say("the mail server has taken the mail");
            }
            if (now.mail.at("failing") == true && last.mail.at("failing") == false)
                Say("mail fails: " + now.mail.at("last_problem").get<std::string>());
            last = now;
            end_ = now;
        } while (!Done() && Wait());
    }

    long long SmsDone(const Standing& now) const {
        return now.Sent() - before_.Sent() + now.NotSent() - before_.NotSent();
    }
    bool Done() const {
        return end_->events > before_.events && sms_done_ >= sms_ && (mail_done_ || mails_ == 0);
    }

    ExitStatus Judge() {
        const Standing& end = *end_;
        std::vector<std::string> wrong;
        if (end.events == before_.events)
            wrong.push_back("the service has not taken the alarm");
        if (end.lost_rows > before_.lost_rows)
            wrong.push_back("a row of the log is lost: see \"tarnexctl status\"");
        if (sms_ == 0 && mails_ == 0)
            wrong.push_back("the settings let neither SMS nor mail out");
        if (sms_lost_)
            wrong.push_back("an SMS was given up or dropped");
        else if (sms_done_ < sms_)
            wrong.push_back("the SMS have not left, the unit is " + end.unit);
        if (mails_ > 0 && !mail_done_)
            wrong.push_back("the mail has not left" +
                            (end.mail.at("failing") == true
                                 ? ": " + end.mail.at("last_problem").get<std::string>()
                                 : ""));
        Say(wrong.empty() ? "all is well" : "not well: " + Joined(wrong));
        return wrong.empty() ? kExitDone : kExitFailed;
    }

    OperatorWorld& world_;
    const Duration limit_;
    Duration waited_{};
    SettingsFile settings_;
    Standing before_;
    std::optional<Standing> end_;
    long long sms_ = 0;
    long long mails_ = 0;
    long long sms_done_ = 0;
    bool sms_lost_ = false;
    bool mail_done_ = false;
};

} // namespace

ExitStatus TryAlarm(OperatorWorld& world, int seconds) {
    return Trial(world, std::chrono::seconds(seconds)).Run();
}

} // namespace tarnex
