#include "events/notification_plan.h"

#include "platform/calendar_text.h"

#include <algorithm>
#include <span>

namespace tarnex {

// ---- the text

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

// ---- the plan

namespace {

constexpr std::size_t kSMSLength = 70;
constexpr std::size_t kPieceLength = 65; // leaves room for "{k/n}"

std::vector<Text> CutIntoPieces(TextView text) {
    const std::size_t count = text.size() / kSMSLength + 1;
    if (count == 1)
        return {Text(text)};
    std::vector<Text> pieces;
    for (std::size_t k = 1; k <= count; ++k) {
        const TextView part = k < count ? text.substr(0, kPieceLength) : text;
        text.remove_prefix(part.size());
        pieces.push_back(u"{" + ToText((long long)k) + u"/" + ToText((long long)count) + u"}" +
                         Text(part));
    }
    return pieces;
}

QuietTime QuietTimeAt(const Settings& settings, const CalendarTime& now) {
    using enum QuietTime::State;
    const auto day = std::size_t(now.weekday);
    if (!settings.QuietTimeOn || !settings.QuietDay[day])
        return {.state = settings.QuietTimeOn ? kOtherDay : kOff, .from = {}, .to = {}};
    QuietTime quiet{.from = FormattedHourMinute(settings.QuietTimes[2 * day]),
                    .to = FormattedHourMinute(settings.QuietTimes[2 * day + 1])};
    const Text time = HourMinuteText(now);
    quiet.state = quiet.from <= time && time <= quiet.to ? kQuiet : kOutside;
    return quiet;
}

bool ForSMS(const EventRecord& event) {
    return event.SMSableNo == u"1";
}

NotificationPlan::Number NumberOf(const NotificationPlan& plan, const Settings& settings,
                                  char16_t recipient, bool on) {
    NotificationPlan::Number number{.recipient = recipient, .held_back = {}};
    const auto hold = [&number](bool holds, HeldBack reason) {
        if (holds)
            number.held_back.push_back(reason);
    };
    hold(!ForSMS(plan.event), HeldBack::kFlag);
    hold(plan.quiet.state == QuietTime::State::kQuiet, HeldBack::kQuietTime);
    hold(settings.AutoSearchOff, HeldBack::kNoUnit);
    hold(settings.SendCount <= 0, HeldBack::kSendCount);
    hold(!on, HeldBack::kNumberOff);
    return number;
}

std::size_t SMSEachTime(const NotificationPlan& plan) {
    return plan.pieces.size() *
           std::size_t(std::ranges::count_if(plan.numbers, &NotificationPlan::Number::Gets));
}

int Repetitions(const NotificationPlan& plan, const Settings& settings) {
    const std::size_t each_time = SMSEachTime(plan);
    if (each_time == 0)
        return 0;
    const std::size_t fill = (kSMSFifoSize + each_time - 1) / each_time;
    return std::min(int(settings.SendCount), int(fill));
}

// A line break is a blank here: a line of the mail must not be of the sender's making, since one
// with a single dot ends the content, and what follows it would be commands to the mail server.
Text MailLine(const Text& text, const CalendarTime& now) {
    Text line = DateText(now) + u" " + text;
    std::ranges::replace_if(
        line, [](char16_t c) { return c == u'\r' || c == u'\n'; }, u' ');
    return line;
}

} // namespace

Text Words(HeldBack reason, char16_t recipient) {
    switch (reason) {
    case HeldBack::kFlag:
        return u"the SMS flag of the record is not 1";
    case HeldBack::kQuietTime:
        return u"it is quiet time";
    case HeldBack::kNoUnit:
        return u"unit-link is off";
    case HeldBack::kSendCount:
        return u"send-count is 0";
    case HeldBack::kNumberOff:
        return u"sms-to-number-" + Text(1, recipient) + u" is off";
    }
    return u"";
}

std::size_t NotificationPlan::SMSCount() const {
    return std::size_t(repetitions) * SMSEachTime(*this);
}

bool NotificationPlan::HeldByQuietTime() const {
    return ForSMS(event) && quiet.state == QuietTime::State::kQuiet;
}

NotificationPlan Plan(EventRecord event, const Settings& settings, const CalendarTime& now) {
    NotificationPlan plan{};
    plan.event = std::move(event);
    plan.text = NotificationText(plan.event);
    plan.pieces = CutIntoPieces(plan.text);
    plan.quiet = QuietTimeAt(settings, now);
    plan.numbers = {NumberOf(plan, settings, u'1', settings.SwitchCheck42),
                    NumberOf(plan, settings, u'2', settings.SwitchCheck43)};
    plan.repetitions = Repetitions(plan, settings);
    if (plan.event.EmailableNo == u"1")
        plan.mail = MailLine(plan.text, now);
    return plan;
}

Text NotifyChannels(const Settings& settings) {
    const auto wanted = [&settings](bool on, TextView mode) {
        return on && (settings.NotifyMode == mode || settings.NotifyMode == u"S+E") ? u'1' : u'0';
    };
    return {wanted(settings.SMSNotifyOn, u"SMS"), wanted(settings.EmailNotifyOn, u"Email")};
}

} // namespace tarnex
