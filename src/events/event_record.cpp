#include "events/event_record.h"

namespace tarnex {

namespace {

constexpr std::size_t kHeadLength = 7; // all the fields in front of the machine name

// Up to `length` characters of the head; a short head gives fewer, or none.
TextView Field(TextView head, std::size_t start, std::size_t length) {
    return start < head.size() ? head.substr(start, length) : TextView();
}

std::int16_t Number(TextView field) {
    return LeadingInt16(field).value_or(0);
}

Text Flag(TextView field) {
    return field.empty() ? Text(u"0") : Text(field);
}

} // namespace

EventRecord ParsedRecord(TextView record) {
    const std::size_t delimiter = record.find(kMemoDelimiter);
    const TextView head = record.substr(0, delimiter);
    EventRecord event;
    event.MachineNo = Number(Field(head, 0, 1));
    event.ServiceNo = Number(Field(head, 1, 2));
    event.StatusNo = ToText(Number(Field(head, 3, 1)));
    event.AutoNo = Number(Field(head, 4, 1));
    event.SMSableNo = Flag(Field(head, 5, 1));
    event.EmailableNo = Flag(Field(head, 6, 1));
    event.MachineName = Field(head, kHeadLength, TextView::npos);
    if (delimiter != TextView::npos)
        event.Memo = record.substr(delimiter + kMemoDelimiter.size());
    return event;
}

} // namespace tarnex
