#include "tests/scenarios/system_fixture.h"

#include <random>
#include <set>

namespace tarnex {
namespace {

// Trouble of every kind at random instants, then calm: the service must always come back.
struct Soak : SystemTest {
    int Random(int below) { return int(random() % unsigned(below)); }

    const std::vector<std::function<void()>> troubles{
        [this] { MoveTo(0); },
        [this] { MoveTo(1 + Random(20)); },
        [this] { unit.Faults.Silent = !unit.Faults.Silent; },
        [this] { unit.Boot(); },
        [this] { unit.Say(std::string(std::size_t(Random(6000)), char(Random(256)))); },
        [this] {
            unit.Faults.TwoChunks = !unit.Faults.TwoChunks;
            unit.Faults.Noise = Random(4) == 0;
            unit.Faults.NoLineEnd = Random(4) == 0;
        },
        [this] { unit.Outcome = SmsOutcome(Random(3)); },
        [this] { log.Problem = Random(2) ? "the log is locked" : ""; },
        [this] { Set(u"Text", u"Text1(34)", u"1390000000" + ToText(Random(10))); },
        [this] { unit.ReceiveSms(u"13900000002", u"1301"); },
        [this] { monitor.Send((Random(2) ? u"txSendSMS" : u"") + RandomText()); },
        [this] { tcp.Dead = !tcp.Dead; },
        [this] { // what it has missed is stored with the next change
            for (const char* problem : {"the history is locked", ""}) {
                history.Problem = problem;
                monitor.SendEvent({.service = 3, .state = 1, .by_mail = true, .memo = u"locked"});
                clock.RunFor(1s);
            }
        },
        [this] { Set(u"Queue", u"SendAgain", Random(2) ? u"On" : u"Off"); },
        [this] {
            for (int i = Random(8) / 7 * 250; i > 0; --i)
                monitor.SendEvent({.service = 3, .state = 1, .by_mail = true, .memo = u"flood"});
        },
        [this] { // killed
            service.reset();
            StartService();
            EXPECT_EQ(monitor.Start(), "");
        },
    };
    // What was queued has a fate or waits, in the queues as in the history; at most one mail is
    // left to the server's word.
    void ExpectBalance() {
        const ServiceParts& parts = service->Parts();
        const MailStatus mail = parts.mail.Status();
        const std::size_t waiting = parts.messages.Waiting().size();
        EXPECT_LE(waiting - parts.queue.Length() - !parts.queue.HeldEntry().empty() - mail.queued -
                      mail.in_flight,
                  1u);
        std::set<std::int64_t> again;
        std::size_t open = 0;
        int again_twice = 0;
        for (const auto& [id, row] : history.Stored) {
            open += row.fate.empty() && (row.kind == "SMS" || row.kind == "mail");
            again_twice += row.again_of != 0 && !again.insert(row.again_of).second;
        }
        EXPECT_EQ(open, waiting);
        EXPECT_EQ(again_twice, 0);
        std::erase_if(history.Stored, [newest = history.Stored.rbegin()->first](const auto& row) {
            return row.first + 1500 < newest && !row.second.fate.empty(); // or it takes long
        });
    }
    Text RandomText() {
        Text text(std::size_t(Random(300)), u'0');
        for (char16_t& c : text)
            c = char16_t(Random(4) ? u'0' + Random(10) : Random(0x10000));
        return text;
    }
    // The unit to that port; 0 is none.
    void MoveTo(int number) {
        if (port != 0)
            ports.Unplug(port);
        if (number != 0)
            ports.Plug(number, unit);
        port = number;
    }

    std::mt19937 random{20240506};
    int port = 3;
};

TEST_F(Soak, AfterAnyTroubleAlarmsGoOutAgain) {
    StartToReady();
    for (int round = 0; round < 60; ++round) {
        for (int i = 0; i < 12; ++i) {
            troubles[std::size_t(Random(int(troubles.size())))]();
            clock.RunFor(Duration(Random(60'000)));
            ExpectBalance();
        }
        unit.Faults = {};
        unit.Outcome = SmsOutcome::kSent;
        log.Problem.clear();
        if (port == 0)
            MoveTo(3);
        // At worst a silent unit is noticed after 90 s, and its next greeting waits for a scan.
        clock.RunFor(5min);
        ASSERT_TRUE(RunUntilReady(5min)) << round;
        const Text memo = u"round " + ToText(round);
        monitor.SendEvent({.service = 3, .state = 1, .by_mail = false, .memo = memo});
        const auto sent = [&] {
            return !unit.Sent().empty() && Contains(unit.Sent().back().text, memo);
        };
        ASSERT_TRUE(clock.RunUntil(sent, 3h)) // behind what a flood has left
            << round;
    }
    EXPECT_FALSE(ended_at);
}

} // namespace
} // namespace tarnex
