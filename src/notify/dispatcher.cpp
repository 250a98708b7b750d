#include "notify/dispatcher.h"

#include "events/notification_plan.h"

namespace tarnex {

void Dispatcher::DispatchEvent(TextView record) {
    const NotificationPlan plan =
        Plan(ParsedRecord(record), parts_.settings, parts_.clock.Calendar());
    parts_.lists.mList1Additem(u"");
    parts_.codec.ListEvent(record, plan.event);
    ++totals_.Events;
    totals_.HeldByQuiet += plan.HeldByQuietTime();
    if (plan.mail) {
        parts_.mail.dSetEmailFifo(*plan.mail);
        parts_.lists.mList1Additem(u"Email:" + plan.text);
    }
    parts_.lists.mList1Additem(u"Log:" + plan.text);
    parts_.log.WriteLog(plan.text, plan.event); // a lost row is counted there
    for (int rep = 0; rep < plan.repetitions; ++rep)
        for (const Text& piece : plan.pieces)
            for (const auto& number : plan.numbers)
                if (number.Gets())
                    QueueSMS(number.recipient + piece);
}

void Dispatcher::QueueSMS(const Text& entry) {
    parts_.queue.QueueSMS(entry);
    parts_.lists.mList1Additem(u"SMS" + entry.substr(0, 1) + u":" + entry.substr(1));
}

} // namespace tarnex
