#include "operator/record_explanation.h"

#include "mail/server_address.h"
#include "operator/moment.h"
#include "platform/calendar_text.h"
#include "platform/file_path.h"
#include "settings/load_settings.h"

#include <algorithm>

namespace tarnex {

namespace {

class Explainer {
  public:
    Explainer(const SettingsFile& file, const CalendarTime& at)
        : file_(file), at_(at), loaded_(ReadSettings(file.Document())),
          settings_(loaded_.settings) {}

    RecordExplanation Of(TextView record) {
        RecordExplanation result;
        result.plan = Plan(ParsedRecord(record), settings_, at_);
        result.quiet_reason = QuietReason(result.plan.quiet);
        result.send_count = std::max<int>(settings_.SendCount, 0);
        for (const auto& number : result.plan.numbers)
            result.sms.push_back(Sms(number));
        result.mail = Mail(result.plan);
        result.log = Log(result.plan.event);
        if (!loaded_.enabled)
            result.gates.push_back("service-enabled is off");
        if (!loaded_.allowed)
            result.gates.push_back("run-allowed is off or missing");
        return result;
    }

  private:
    std::string QuietReason(const QuietTime& quiet) const {
        const std::string name = WeekdayName(at_.weekday);
        if (quiet.state == QuietTime::State::kOff)
            return "quiet-time is off";
        if (quiet.state == QuietTime::State::kOtherDay)
            return "quiet time is not on for " + name;
        const std::string window = name + " is quiet from " + ToUtf8(quiet.from) + " to " +
                                   ToUtf8(quiet.to) + ", and it is " + ToUtf8(HourMinuteText(at_));
        return quiet.from > quiet.to ? window + "; a time that passes midnight is never quiet"
                                     : window;
    }

    RecordExplanation::Sms Sms(const NotificationPlan::Number& number) const {
        const bool first = number.recipient == u'1';
        const std::string n = first ? "1" : "2";
        RecordExplanation::Sms sms;
        sms.recipient = number.recipient - u'0';
        sms.number = Text(file_.Value(first ? "alarm-number-1"_setting : "alarm-number-2"_setting));
        sms.taken = number.Gets();
        sms.reasons = HeldBackWords(number);
        if (sms.taken) {
            sms.reasons = {"the SMS flag of the record is 1", "sms-to-number-" + n + " is on"};
            if (Trim(sms.number).empty())
                sms.reasons.push_back("but alarm-number-" + n +
                                      " is empty, so the unit has nobody to send it to");
        }
        return sms;
    }

    WayExplanation Mail(const NotificationPlan& plan) const {
        const MailSettings& mail = loaded_.mail;
        WayExplanation way;
        way.taken = plan.mail.has_value();
        if (!way.taken) {
            way.reasons = {"the mail flag of the record is not 1"};
            return way;
        }
        way.reasons = {"the mail flag of the record is 1"};
        if (!ParseServerAddress(mail.SmtpServer))
            way.reasons.push_back("but mail-server names no server, so no attempt succeeds");
        else if (Trim(mail.MailFrom).empty() || Trim(mail.MailTo).empty())
            way.reasons.push_back("but mail-from or mail-to is empty, so servers refuse it");
        else
            way.reasons.push_back("to " + ToUtf8(mail.MailTo) + " from " + ToUtf8(mail.MailFrom) +
                                  " through " + ToUtf8(mail.SmtpServer));
        return way;
    }

    WayExplanation Log(const EventRecord& event) const {
        WayExplanation way;
        if (settings_.LogPath.empty())
            way.reasons.push_back("log-database is empty");
        if (!ServiceName(event.ServiceNo))
            way.reasons.push_back("services from 91 on have no rows");
        way.taken = way.reasons.empty();
        if (!way.taken)
            return way;
        const std::string path = ToUtf8(settings_.LogPath);
        way.reasons = {"a row goes to " + path};
        std::error_code error;
        if (!std::filesystem::exists(ToPath(path), error) && !error)
            way.reasons.push_back("but that file is not there, so the row is lost");
        return way;
    }

    const SettingsFile& file_;
    const CalendarTime& at_;
    const LoadedSettings loaded_;
    const Settings& settings_;
};

} // namespace

std::vector<std::string> HeldBackWords(const NotificationPlan::Number& number) {
    std::vector<std::string> words;
    for (const HeldBack reason : number.held_back)
        words.push_back(ToUtf8(Words(reason, number.recipient)));
    return words;
}

RecordExplanation Explain(const SettingsFile& file, TextView record, const CalendarTime& at) {
    return Explainer(file, at).Of(record);
}

} // namespace tarnex
