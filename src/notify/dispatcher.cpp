#include "notify/dispatcher.h"

namespace tarnex {

void Dispatcher::DispatchEvent(TextView record) {
    const NotificationPlan plan =
        Plan(ParsedRecord(record), parts_.settings, parts_.clock.Calendar());
    ListPlan(record, plan);
    ++totals_.Events;
    totals_.HeldByQuiet += plan.HeldByQuietTime();
    const MessageOrigin origin{.record = Text(record)};
    if (plan.mail)
        parts_.mail.dSetEmailFifo(*plan.mail, origin);
    parts_.log.WriteLog(plan.text, plan.event); // a lost row is counted there
    for (int rep = 0; rep < plan.repetitions; ++rep)
        for (const Text& piece : plan.pieces)
            for (const auto& number : plan.numbers)
                if (number.Gets())
                    QueueSMS(number.recipient + piece, origin);
    TellHeldBack(plan, origin);
}

void Dispatcher::TellHeldBack(const NotificationPlan& plan, const MessageOrigin& origin) {
    for (const auto& number : plan.numbers)
        if (!number.Gets() && number.held_back.front() != HeldBack::kFlag)
            for (const Text& piece : plan.pieces)
                parts_.messages.HeldBack({.way = MessageWay::kSMS,
                                          .number = TextView(&number.recipient, 1),
                                          .text = piece,
                                          .origin = origin},
                                         Words(number.held_back.front(), number.recipient));
}

// The words are put together only where somebody reads them.
void Dispatcher::ListPlan(TextView record, const NotificationPlan& plan) {
    if (!parts_.lists.DebugOn)
        return;
    const EventRecord& e = plan.event;
    parts_.lists.mList1Additem(u"");
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
    if (plan.mail)
        list(u"Email:", plan.text);
    list(u"Log:", plan.text);
}

void Dispatcher::QueueSMS(const Text& entry, const MessageOrigin& origin) {
    parts_.queue.QueueSMS(entry, origin);
    if (parts_.lists.DebugOn)
        parts_.lists.mList1Additem(u"SMS" + entry.substr(0, 1) + u":" + entry.substr(1));
}

} // namespace tarnex
