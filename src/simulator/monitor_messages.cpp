#include "simulator/monitor_messages.h"

#include "simulator/words.h"

namespace tarnex {

namespace {

constexpr TextView kMemoDelimiter = u"{[b^k^]}";

// clang-format off
constexpr EventWord kServices[] = {
    { 1, "abnormal-end", "abnormal end of the last run"},
    { 2, "memory",       "memory"},
    { 3, "cpu",          "CPU load"},
    {10, "ping1",        "ping of address 1"},
    {11, "ping2",        "ping of address 2"},
    {20, "files",        "file monitoring"},
    {30, "web",          "web service"},
    {31, "ftp",          "ftp service"},
    {32, "pop",          "pop service"},
    {33, "smtp",         "smtp service"},
    {50, "storage",      "storage space"},
    {80, "link",         "communication"},
    {90, "machine",      "the whole machine"},
};
constexpr EventWord kStates[] = {
    {1, "abnormal", "abnormal"},
    {2, "normal",   "normal"},
    {3, "lost",     "lost"},
};
constexpr EventWord kActions[] = {
    {0, "none",            "nothing"},
    {1, "restart-service", "restarts the service"},
    {3, "restart-device",  "restarts the machine"},
    {4, "recover",         "tries to recover"},
};
// clang-format on

// "" where the table has no such number.
std::string_view MeaningOf(std::span<const EventWord> words, int number) {
    const auto found = std::ranges::find(words, number, &EventWord::number);
    return found == words.end() ? "" : found->meaning;
}

std::string NameOf(std::span<const EventWord> words, int number) {
    const std::string_view meaning = MeaningOf(words, number);
    return meaning.empty() ? "number " + std::to_string(number) : std::string(meaning);
}

std::string DescribeNothing(TextView) {
    return "";
}

std::string DescribeText(TextView payload) {
    return ": " + ToUtf8(payload);
}

// "4110100": signal level 4, unit online, monitors on links 0 and 2.
std::string DescribeStates(TextView payload) {
    if (payload.size() < 7)
        return ": cut short";
    std::string links;
    for (std::size_t i = 0; i < 5; ++i)
        if (payload[2 + i] == u'1')
            links += (links.empty() ? "" : ", ") + std::to_string(i);
    return ": signal level " + ToUtf8(payload.substr(0, 1)) + " of 5, unit " +
           (payload[1] == u'1' ? "online" : "not online") + ", monitors on " +
           (links.empty() ? "no link" : "link " + links);
}

// "1301": machine 1, service 30, action 1.
std::string DescribeCommand(TextView payload) {
    if (payload.size() != 4 || !std::ranges::all_of(payload, IsDigit))
        return ": not a command";
    const int service = int(LeadingNumber(payload.substr(1, 2)));
    const std::string_view name = MeaningOf(EventServices(), service);
    const std::string action = payload[3] == u'1'   ? "restart or start "
                               : payload[3] == u'2' ? "shut down "
                                                    : "do something unknown to ";
    return ": " + action +
           (name.empty() ? "service " + std::to_string(service) : std::string(name)) +
           " on machine " + ToUtf8(payload.substr(0, 1));
}

struct LinkCode {
    TextView code;
    std::string_view meaning;
    std::string (*payload)(TextView);
};

// clang-format off
constexpr LinkCode kCodes[] = {
    {u"txYesRigh", "greeting accepted",                    DescribeNothing},
    {u"tx--Ready", "the unit is ready",                    DescribeNothing},
    {u"txVersion", "the unit's firmware version",          DescribeText},
    {u"tx-Serial", "the unit's serial number",             DescribeText},
    {u"tx-States", "heartbeat of the service",             DescribeStates},
    {u"txBooting", "the unit is starting up",              DescribeNothing},
    {u"tx-NoConn", "no unit connected, searching",         DescribeNothing},
    {u"txNexLost", "the unit is lost",                     DescribeNothing},
    {u"tx-NoCard", "the unit has no SIM card",             DescribeNothing},
    {u"tx-ACLost", "mains power lost",                     DescribeNothing},
    {u"tx---ACOk", "mains power back",                     DescribeNothing},
    {u"ACOk",      "mains power back",                     DescribeNothing},
    {u"txConLost", "the unit's connection input lost",     DescribeNothing},
    {u"txControl", "command by SMS",                       DescribeCommand},
    {u"tx-SMSEnd", "the service ends",                     DescribeNothing},
    {u"txHelloNx", "greeting of a monitor",                DescribeText},
    {u"txHeartSv", "heartbeat of a monitor",               DescribeNothing},
    {u"txSendSMS", "event to be notified",                 DescribeText},
};
// clang-format on

} // namespace

std::span<const EventWord> EventServices() {
    return kServices;
}
std::span<const EventWord> EventStates() {
    return kStates;
}
std::span<const EventWord> EventActions() {
    return kActions;
}

std::optional<int> NumberOf(std::span<const EventWord> words, std::string_view text) {
    const auto found = std::ranges::find(words, text, &EventWord::word);
    if (found != words.end())
        return found->number;
    return ReadNumberUpTo(text, 99);
}

Text MakeEventRecord(const MonitorEvent& event) {
    Text record = ToText(event.machine);
    record += ToText(event.service, 2);
    record += ToText(event.state);
    record += ToText(event.action);
    record += event.by_sms ? u'1' : u'0';
    record += event.by_mail ? u'1' : u'0';
    record += event.machine_name;
    record += kMemoDelimiter;
    record += event.memo;
    return record;
}

Text MakeEventMessage(const MonitorEvent& event) {
    return u"txSendSMS" + MakeEventRecord(event);
}

std::string DescribeEvent(const MonitorEvent& event) {
    return "machine " + std::to_string(event.machine) + ", " +
           NameOf(EventServices(), event.service) + ": " + NameOf(EventStates(), event.state) +
           "; action: " + NameOf(EventActions(), event.action) +
           (event.by_sms ? "; by SMS" : "; not by SMS") +
           (event.by_mail ? ", by mail" : ", not by mail");
}

std::string DescribeCode(TextView message) {
    for (const LinkCode& row : kCodes)
        if (StartsWith(message, row.code))
            return std::string(row.meaning) + row.payload(message.substr(row.code.size()));
    return "unknown code";
}

} // namespace tarnex
