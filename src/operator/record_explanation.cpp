#include "operator/record_explanation.h"

#include "events/event_names.h"
#include "events/notification_text.h"
#include "events/quiet_time.h"
#include "events/sms_pieces.h"
#include "mail/mail_settings.h"
#include "mail/server_address.h"
#include "notify/dispatcher.h"
#include "operator/calendar_words.h"
#include "platform/calendar_text.h"
#include "settings/load_settings.h"

#include <algorithm>
#include <filesystem>

namespace tarnex {

namespace {

class Explainer {
  public:
    Explainer(const SettingsFile& file, const CalendarTime& at)
        : file_(file), at_(at), loaded_(ReadSettings(file.Document(), {})),
          settings_(loaded_.settings) {}

    RecordExplanation Of(TextView record) {
        RecordExplanation result;
        result.event = ParsedRecord(record);
        result.text = NotificationText(result.event);
        result.pieces = CutIntoPieces(result.text);
        result.quiet = InQuietTime(settings_, at_);
        result.quiet_reason = QuietReason();
        result.times = std::max<int>(settings_.SendCount, 0);
        for (const int recipient : {1, 2})
            result.sms.push_back(Sms(result, recipient));
        result.queued = Queued(result);
        result.mail = Mail(result.event);
        result.log = Log(result.event);
        if (!loaded_.enabled)
            result.gates.push_back("service-enabled is off");
        if (!loaded_.allowed)
            result.gates.push_back("run-allowed is off or missing");
        return result;
    }

  private:
    std::string QuietReason() const {
        const auto day = std::size_t(at_.weekday);
        const std::string name = WeekdayName(at_.weekday);
        if (!settings_.QuietTimeOn)
            return "quiet-time is off";
        if (!settings_.QuietDay[day])
            return "quiet time is not on for " + name;
        const Text from = FormattedHourMinute(settings_.QuietTimes[2 * day]);
        const Text to = FormattedHourMinute(settings_.QuietTimes[2 * day + 1]);
        const std::string window = name + " is quiet from " + ToUtf8(from) + " to " + ToUtf8(to) +
                                   ", and it is " + ToUtf8(HourMinuteText(at_));
        return from > to ? window + "; a time that passes midnight is never quiet" : window;
    }

    RecordExplanation::Sms Sms(const RecordExplanation& result, int recipient) const {
        const std::string n = std::to_string(recipient);
        RecordExplanation::Sms sms;
        sms.recipient = recipient;
        sms.number = Text(file_.Value(*FindSetting("alarm-number-" + n)));
        const auto block = [&sms](bool blocks, const std::string& reason) {
            if (blocks)
                sms.reasons.push_back(reason);
        };
        block(result.event.SMSableNo != u"1", "the SMS flag of the record is not 1");
        block(result.quiet, "it is quiet time");
        block(settings_.AutoSearchOff, "unit-link is off");
        block(settings_.SendCount <= 0, "send-count is 0");
        const bool on = recipient == 1 ? settings_.SwitchCheck42 : settings_.SwitchCheck43;
        block(!on, "sms-to-number-" + n + " is off");
        sms.taken = result.event.SMSableNo == u"1" && !result.quiet && result.times > 0 &&
                    Contains(SmsRecipients(settings_), ToText(recipient));
        if (sms.taken) {
            sms.reasons = {"the SMS flag of the record is 1", "sms-to-number-" + n + " is on"};
            block(Trim(sms.number).empty(),
                  "but alarm-number-" + n + " is empty, so the unit has nobody to send it to");
        }
        return sms;
    }

    // The dispatcher stops repeating once it has filled the queue.
    static std::size_t Queued(const RecordExplanation& result) {
        const auto recipients = std::ranges::count(result.sms, true, &WayExplanation::taken);
        std::size_t queued = 0;
        for (int i = 0; recipients > 0 && i < result.times && queued < kSMSFifoSize; ++i)
            queued += std::size_t(recipients) * result.pieces.size();
        return queued;
    }

    WayExplanation Mail(const EventRecord& event) const {
        const MailSettings mail = ReadMailSettings(file_.Document());
        WayExplanation way;
        way.taken = event.EmailableNo == u"1";
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
        if (!std::filesystem::exists(path, error) && !error)
            way.reasons.push_back("but that file is not there, so the row is lost");
        return way;
    }

    const SettingsFile& file_;
    const CalendarTime& at_;
    const LoadedSettings loaded_;
    const Settings& settings_;
};

} // namespace

RecordExplanation Explain(const SettingsFile& file, TextView record, const CalendarTime& at) {
    return Explainer(file, at).Of(record);
}

} // namespace tarnex
