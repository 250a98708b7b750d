#include "tests/scenarios/system_fixture.h"

namespace tarnex {
namespace {

// What the operator is told of the main job.
struct Notices : SystemTest {
    // The newest line, and whether it asks for action.
    void ExpectSaid(bool action, const std::string& line) {
        ASSERT_FALSE(said.empty());
        EXPECT_EQ(said.back(), line);
        EXPECT_EQ(!needs_somebody.empty() && needs_somebody.back() == line, action);
    }
};

TEST_F(Notices, ALostUnitAndOneThatIsNotFound) {
    Set(u"Combo", u"Combo1(6)", u"1");
    StartToReady();
    Monitor stubborn(clock, network, code_page, {.link = 1, .name = u"X\n", .greet_again = 0s});
    EXPECT_EQ(stubborn.Start(), "");
    unit.Faults.Instead["SENDSMS1"] = "";
    for (int service : {2, 3, 50})
        monitor.SendEvent({.service = service, .state = 1, .by_mail = false});
    clock.RunFor(1s);
    ports.Unplug(3);
    clock.RunFor(1s);
    ExpectSaid(true, "The unit was lost at COM3 (COM3): its device went away; look whether its "
                     "cable or its adapter was pulled. 3 SMS that waited were dropped. No SMS "
                     "leaves until it is ready again.");
    clock.RunFor(67s);
    EXPECT_EQ(said.size(), 1U);
    clock.RunFor(1s);
    ExpectSaid(true, "The monitoring program \"X\\n\" on link 1 has not greeted it again since the "
                     "service began anew with the unit: it is told nothing of the unit and of SMS "
                     "commands, and nobody would notice its end. Start it again.");
    ports.SetStatus(1, PortStatus::kOk);
    for (int port = 4; port <= 20; ++port)
        ports.SetStatus(port, PortStatus::kUnusable);
    clock.RunFor(5min);
    ExpectSaid(true, "The unit has not been ready for 5 minutes, so no SMS leaves: it was not "
                     "found (COM1 (COM1) no answer; COM2 to COM3 not there; COM4 to COM20 (COM4 to "
                     "COM20) no serial line). \"tarnexctl doctor\" looks at each port and says "
                     "what to do.");
    EXPECT_EQ(said.size(), 3U);
    stubborn.Greet();
    clock.RunFor(1s);
    ExpectSaid(false, "A monitoring program has greeted link 1 again, after 6 min.");
    ports.Plug(3, unit);
    ASSERT_TRUE(RunUntilReady(2min));
    ExpectSaid(false, "The unit is ready again at COM3 (COM3), after 6 min.");
}

TEST_F(Notices, WhatTheUnitReports) {
    StartToReady();
    unit.Signal = 4;
    clock.RunFor(5min);
    unit.Signal = 99;
    clock.RunFor(5min - 5s);
    EXPECT_TRUE(said.empty());
    clock.RunFor(10s);
    EXPECT_EQ(needs_somebody.size(), 1U);
    unit.Signal = 5;
    clock.RunFor(5s);
    ExpectSaid(false, "The signal of the unit is strong enough again.");

    for (int i = 0; i < 3; ++i) {
        unit.LosePower();
        clock.RunFor(20s);
        unit.RegainPower();
        clock.RunFor(i < 2 ? 60s : 0s);
    }
    EXPECT_EQ(needs_somebody.size(), 2U);
    clock.RunFor(75s);
    ExpectSaid(false, "The unit has mains power again, after 3 min; it was lost 3 times.");

    unit.LoseCard();
    clock.RunFor(5s);
    unit.LoseCard();
    clock.RunFor(5s);
    EXPECT_EQ(needs_somebody.size(), 3U);
    unit.Boot();
    ASSERT_TRUE(clock.RunUntil([this] { return !State().UnitReady; }, 20s));
    ASSERT_TRUE(RunUntilReady(2min));
    clock.RunFor(70s);
    ExpectSaid(false, "The unit reports no lack of a SIM card any more.");
}

TEST_F(Notices, WhoIsGoneAndWhoMayNotCommand) {
    StartToReady();
    monitor.Send(u"txHelloNx" + Text(60000, u'W'));
    clock.RunFor(1s);
    monitor.Stop();
    clock.RunFor(1min);
    ExpectSaid(true, "The monitoring program \"" + std::string(64, 'W') +
                         "…\" on link 0 is lost: nothing was heard of it for 40 seconds. "
                         "What it watches is watched by nobody; start it again.");
    EXPECT_EQ(monitor.Start(), "");
    clock.RunFor(1s);
    EXPECT_EQ(needs_somebody.size(), 1U);
    EXPECT_EQ(said.size(), 2U);

    unit.ReceiveSms(u"13755554321", u"the price of 20 a month"); // holds no command
    clock.RunFor(5s);
    EXPECT_EQ(said.size(), 2U);
    unit.ReceiveSms(u"13755554321", u"1901");
    clock.RunFor(5s);
    ExpectSaid(true, "An SMS command from *******4321 was refused, since that is neither of the "
                     "alarm numbers: if you know the sender, see \"tarnexctl settings list "
                     "alarm-number\".");
    clock.RunFor(61min);
    EXPECT_EQ(said.size(), 4U);
}

TEST_F(Notices, AnSmsGivenUp) {
    StartToReady();
    unit.Outcome = SmsOutcome::kFailed;
    monitor.SendEvent({.service = 3, .state = 1});
    clock.RunFor(30s);
    unit.Faults.Instead["SENDSMS1"] = "ERROR";
    clock.RunFor(1min);
    ExpectSaid(true, "An SMS to number 1 (*******0001) was given up after 4 attempts (SendFail, "
                     "SendFail, Failed, Failed); 1 since one was sent last. Look at the credit of "
                     "the card, the signal, the number and the service centre.");
    unit.Faults.Instead.clear();
    unit.Outcome = SmsOutcome::kSent;
    monitor.SendEvent({.service = 3, .state = 1});
    clock.RunFor(30s);
    ExpectSaid(false, "SMS leave again; 1 given up meanwhile.");
}

TEST_F(Notices, AFullQueueAndNumbersOfTheSample) {
    StartService();
    EXPECT_TRUE(Set(u"Text", u"Text1(35)", u"00000000"));
    clock.RunFor(10s);
    EXPECT_TRUE(said.back().starts_with("The service is not set up yet"));
    EXPECT_TRUE(Set(u"Text", u"Text1(35)", u"13900000002"));
    clock.RunFor(10s);
    EXPECT_EQ(monitor.Start(), "");
    unit.Faults.Silent = true;
    for (int i = 0; i < 160; ++i)
        monitor.SendEvent({.service = 3, .state = 1});
    clock.RunFor(10s);
    EXPECT_TRUE(said.back().starts_with("The SMS queue is nearly full")) << said.back();
    for (int i = 0; i < 50; ++i)
        monitor.SendEvent({.service = 3, .state = 1});
    clock.RunFor(10s);
    EXPECT_TRUE(said.back().starts_with("The SMS queue is full")) << said.back();
    unit.Faults.Silent = false;
    ASSERT_TRUE(
        clock.RunUntil([this] { return said.back() == "The SMS queue has room again."; }, 1h));
}

} // namespace
} // namespace tarnex
