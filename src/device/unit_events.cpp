#include "device/unit_events.h"

#include "device/command_sender.h"

#include <algorithm>

namespace tarnex {

namespace {

constexpr TextView kSignalPrefix = u"TX:TXCSQ(";

enum class Where { kAnywhere, kAtStart };

struct EventTest {
    TextView text;
    Where where;
    UnitEvent event;
    TextView state_word;
    TextView monitor_code; // as CodeOfState
};

// clang-format off
constexpr EventTest kEventTests[] = {
    {kSignalPrefix,      Where::kAnywhere, UnitEvent::kSignal,      u"",        u""},
    {u"TX:SENDOK",       Where::kAnywhere, UnitEvent::kSendOK,      u"",        u""},
    {u"TX:SENDFAIL",     Where::kAnywhere, UnitEvent::kSendFail,    u"",        u""},
    {u"TX:NOSimCard",    Where::kAnywhere, UnitEvent::kState,       u"NoCard",  u"tx-NoCard"},
    {u"TX:InitSysOk",    Where::kAnywhere, UnitEvent::kState,       u"SYSOk",   u""},
    {u"TX:InitGsmOk",    Where::kAnywhere, UnitEvent::kState,       u"GSMOk",   u""},
    {u"TX:Alarm(AC)",    Where::kAnywhere, UnitEvent::kState,       u"ACLost",  u"tx-ACLost"}, // mains lost
    {u"TX:Alarm(CON)",   Where::kAnywhere, UnitEvent::kState,       u"CONLost", u"txConLost"}, // connection alarm
    {u"TX:Alarm(ACOK)",  Where::kAnywhere, UnitEvent::kState,       u"ACOk",    u"ACOk"},      // mains back; its code is bare
    {u"TX:SMRCV(",       Where::kAtStart,  UnitEvent::kReceivedSMS, u"",        u""},
};
// clang-format on

} // namespace

ClassifiedLine ClassifyLine(TextView line) {
    for (const EventTest& test : kEventTests)
        if (test.where == Where::kAtStart ? StartsWith(line, test.text) : Contains(line, test.text))
            return {test.event, test.state_word};
    return {};
}

TextView CodeOfState(TextView state_word) {
    const auto row = std::ranges::find(kEventTests, state_word, &EventTest::state_word);
    return row == std::end(kEventTests) ? state_word : row->monitor_code;
}

std::optional<std::int16_t> SignalQuality(TextView line) {
    const Text cut = CutAnswer(line, kSignalPrefix);
    const TextView values = Trim(cut);
    const auto comma = values.find(u',');
    if (values.size() <= 2 || comma == TextView::npos || comma == 0)
        return std::nullopt;
    return LeadingInt16(values.substr(0, comma));
}

} // namespace tarnex
