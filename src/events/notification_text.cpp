#include "events/notification_text.h"

#include "events/event_names.h"

#include <algorithm>
#include <span>

namespace tarnex {

namespace {

constexpr int kAbnormalEnd = 1; // the one service whose name is a whole statement

constexpr int kAny = -1;

struct TailRule {
    TextView state;                // empty: any
    std::span<const int> services; // empty: any
    int action;                    // kAny: any
    TextView tail;                 // %M machine digit, %S two-digit service, %1 to %9 action name
};

constexpr int kMachine[] = {2, 3, 10, 11};
constexpr int kFiles[] = {20};
constexpr int kStorage[] = {50};
constexpr int kWhole[] = {80, 90};
constexpr std::span<const int> kAnyService;

// How a text ends: by the first row that matches. The last row always does.
// clang-format off
constexpr TailRule kTailRules[] = {
    {u"1", kMachine,    3,    u"%3。"},
    {u"1", kMachine,    kAny, u"。回复：%M901重启设备，%M902关闭设备。"},
    {u"1", kStorage,    0,    u"。"},
    {u"",  kWhole,      kAny, u"。"},
    {u"1", kFiles,      0,    u"。"},
    {u"1", kFiles,      4,    u"，%4。"},
    {u"1", kFiles,      kAny, u""},
    {u"3", kAnyService, kAny, u"%3。"},
    {u"2", kAnyService, kAny, u"。"},
    {u"1", kAnyService, 1,    u"，%1。"},
    {u"",  kAnyService, kAny, u"。回复：%M%S1重启服务，%M%S2关闭服务，%M901重启设备，%M902关闭设备。"},
};
// clang-format on

bool Matches(const TailRule& rule, const EventRecord& event) {
    return (rule.state.empty() || rule.state == event.StatusNo) &&
           (rule.services.empty() ||
            std::ranges::find(rule.services, event.ServiceNo) != rule.services.end()) &&
           (rule.action == kAny || rule.action == event.AutoNo);
}

Text Placeholder(char16_t letter, const EventRecord& event) {
    switch (letter) {
    case u'M':
        return ToText(event.MachineNo);
    case u'S':
        return ToText(event.ServiceNo, 2);
    default:
        return Text(ActionName(letter - u'0').value_or(TextView()));
    }
}

Text Tail(const EventRecord& event) {
    const auto rule = std::ranges::find_if(
        kTailRules, [&event](const TailRule& candidate) { return Matches(candidate, event); });
    Text tail;
    for (std::size_t i = 0; i < rule->tail.size(); ++i) {
        if (rule->tail[i] == u'%')
            tail += Placeholder(rule->tail[++i], event);
        else
            tail += rule->tail[i];
    }
    return tail;
}

} // namespace

Text NotificationText(const EventRecord& event) {
    Text text = u"设备" + ToText(event.MachineNo);
    if (!event.Memo.empty())
        text += u'"' + event.Memo + u'"';
    if (event.ServiceNo != kAbnormalEnd)
        text += u"的";
    text += ServiceName(event.ServiceNo).value_or(TextView());
    if (event.ServiceNo != kAbnormalEnd) {
        text += StateName(LeadingInt16(event.StatusNo).value_or(0)).value_or(TextView());
        if (!event.MachineName.empty())
            text += u'(' + event.MachineName + u')';
    }
    return text + Tail(event);
}

} // namespace tarnex
