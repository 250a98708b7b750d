#include "notify/dispatcher.h"

#include "events/notification_plan.h"

namespace tarnex {

void Dispatcher::DispatchEvent(TextView record) {
    const NotificationPlan plan =
        Plan(ParsedRecord(record), parts_.settings, parts_.clock.Calendar());
    parts_.lists.mList1Additem(u"");
    ListEvent(record, plan.event);
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

void Dispatcher::ListEvent(TextView record, const EventRecord& e) {
    if (!parts_.lists.DebugOn)
        return;
    parts_.lists.mList1Additem(u"解码:" + Text(record));
    const auto state_no = LeadingInt16(e.StatusNo).value_or(0);
    const auto list = [this](TextView label, TextView value, std::optional<TextView> name = {}) {
        parts_.lists.mList1Additem(Text(label) + Text(value) + Text(name.value_or(TextView())));
    };
    list(u"MachineNo:", ToText(e.MachineNo));
    list(u"ServiceNo:", ToText(e.ServiceNo), ServiceName(e.ServiceNo));
    list(u"StatusNo:", e.StatusNo, StateName(state_no));
    list(u"AutoNo:", ToText(e.AutoNo), ActionName(e.AutoNo));
    list(u"SMSableNo:", e.SMSableNo);
    list(u"EmailableNo:", e.EmailableNo);
    list(u"MachineName:", e.MachineName);
    list(u"Memo:", e.Memo);
}

void Dispatcher::QueueSMS(const Text& entry) {
    parts_.queue.QueueSMS(entry);
    parts_.lists.mList1Additem(u"SMS" + entry.substr(0, 1) + u":" + entry.substr(1));
}

} // namespace tarnex
