#include "notify/dispatcher.h"

#include "events/quiet_time.h"
#include "events/sms_pieces.h"
#include "platform/calendar_text.h"

#include <algorithm>

namespace tarnex {

Text NotifyChannels(const Settings& settings) {
    const auto wanted = [&settings](bool on, TextView mode) {
        return on && (settings.NotifyMode == mode || settings.NotifyMode == u"S+E") ? u'1' : u'0';
    };
    return {wanted(settings.SMSNotifyOn, u"SMS"), wanted(settings.EmailNotifyOn, u"Email")};
}

Text SmsRecipients(const Settings& settings) {
    Text recipients;
    if (settings.SwitchCheck42)
        recipients += u'1';
    if (settings.SwitchCheck43)
        recipients += u'2';
    return settings.AutoSearchOff ? Text() : recipients;
}

void Dispatcher::DispatchEvent(TextView record) {
    parts_.lists.mList1Additem(u"");
    parts_.codec.ParseEventRecord(record);
    const Text notification = parts_.codec.ComposeNotification();
    const bool sms_wanted = notification[0] == u'1';
    const bool sms_ok = sms_wanted && SMSTimeAllowed();
    ++totals_.Events;
    totals_.HeldByQuiet += sms_wanted && !sms_ok;
    const bool mail_ok = notification[1] == u'1';
    const Text text = notification.substr(2);
    if (mail_ok)
        QueueMail(text);
    parts_.lists.mList1Additem(u"Log:" + text);
    parts_.log.WriteLog(text, parts_.codec.Current()); // a lost row is counted there
    if (sms_ok)
        QueuePieces(text);
}

bool Dispatcher::SMSTimeAllowed() const {
    return !InQuietTime(parts_.settings, parts_.clock.Calendar());
}

// A line break is a blank here: a line of the mail must not be of the sender's making, since one
// with a single dot ends the content, and what follows it would be commands to the mail server.
void Dispatcher::QueueMail(const Text& text) {
    Text line = DateText(parts_.clock.Calendar()) + u" " + text;
    std::ranges::replace_if(
        line, [](char16_t c) { return c == u'\r' || c == u'\n'; }, u' ');
    parts_.mail.dSetEmailFifo(line);
    parts_.lists.mList1Additem(u"Email:" + text);
}

void Dispatcher::QueuePieces(const Text& text) {
    const Text recipients = SmsRecipients(parts_.settings);
    if (recipients.empty())
        return;
    const std::vector<Text> pieces = CutIntoPieces(text);
    // Once the pieces fill the queue, repeating them would only push the same ones out again.
    std::size_t queued = 0;
    for (int rep = 0; rep < parts_.settings.SendCount && queued < kSMSFifoSize; ++rep) {
        for (const Text& piece : pieces) {
            for (const char16_t recipient : recipients) {
                parts_.queue.QueueSMS(recipient + piece);
                parts_.lists.mList1Additem(Text(u"SMS") + recipient + u":" + piece);
            }
        }
        queued += pieces.size() * recipients.size();
    }
}

} // namespace tarnex
