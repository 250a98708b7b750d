#include "simulator/link_codes.h"

#include "simulator/event_words.h"

#include <algorithm>
#include <span>

namespace tarnex {

namespace {

std::string DescribeNothing(TextView) {
    return "";
}

std::string DescribeText(TextView payload) {
    return ": " + ToUtf8(payload);
}

// "4110100": signal level 4, unit online, monitors on the first and the third link.
std::string DescribeStates(TextView payload) {
    if (payload.size() < 7)
        return ": cut short";
    std::string links;
    for (std::size_t i = 0; i < 5; ++i)
        if (payload[2 + i] == u'1')
            links += (links.empty() ? "" : ", ") + std::to_string(i + 1);
    return ": signal level " + ToUtf8(payload.substr(0, 1)) + " of 5, unit " +
           (payload[1] == u'1' ? "online" : "not online") + ", monitors on " +
           (links.empty() ? "no link" : "link " + links);
}

// "1301": machine 1, service 30, action 1.
std::string DescribeCommand(TextView payload) {
    const bool digits =
        std::ranges::all_of(payload, [](char16_t c) { return c >= '0' && c <= '9'; });
    if (payload.size() != 4 || !digits)
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

std::string DescribeCode(TextView message) {
    for (const LinkCode& row : kCodes)
        if (StartsWith(message, row.code))
            return std::string(row.meaning) + row.payload(message.substr(row.code.size()));
    return "unknown code";
}

} // namespace tarnex
