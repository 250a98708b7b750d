#include "tests/scenarios/system_fixture.h"

#include <algorithm>

namespace tarnex {
namespace {

// What waits when something ends it, with SendAgain on.
struct Fates : SystemTest {
    Fates() {
        Set(u"Queue", u"SendAgain", u"On");
        Set(u"Check", u"Check1(43)", u"0");
    }
    void Alarm(int number, bool by_mail = false) {
        monitor.SendEvent(
            {.service = 3, .state = 1, .by_mail = by_mail, .memo = u"nr" + ToText(number) + u"."});
    }
    // How often the alarm of that number left.
    long Times(int number) const {
        return std::ranges::count_if(unit.Sent(), [&](const SentSms& sms) {
            return Contains(sms.text, u"nr" + ToText(number) + u".");
        });
    }
    long Said(std::string_view what) const {
        return std::ranges::count_if(
            said, [&](const std::string& line) { return line.find(what) != line.npos; });
    }
    std::size_t Rows(std::string_view fate) const {
        return std::size_t(std::ranges::count_if(
            history.Stored, [&](const auto& row) { return row.second.fate == fate; }));
    }
    // As kill -9 does it.
    void Kill() {
        service.reset();
        StartService();
        monitor.Start();
    }
    // Every alarm leaves, and no more than one of each loss twice.
    void ExpectAllSent(int alarms, int losses) {
        clock.RunFor(15min);
        int twice = 0;
        for (int i = 0; i < alarms; ++i) {
            EXPECT_GE(Times(i), 1) << i;
            EXPECT_LE(Times(i), 2) << i;
            twice += Times(i) == 2;
        }
        EXPECT_LE(twice, losses);
        EXPECT_TRUE(service->Parts().messages.Waiting().empty());
    }
};

TEST_F(Fates, APulledAdapterAndASilentUnitLoseNothing) {
    StartToReady();
    for (int i = 0; i < 5; ++i)
        Alarm(i);
    clock.RunFor(9s); // one is under way
    ports.Unplug(3);
    clock.RunFor(2min);
    EXPECT_EQ(service->Parts().again.ToSend(), 5u);
    ports.Plug(3, unit);
    ExpectAllSent(5, 1);
    unit.Outcome = SmsOutcome::kLost;
    for (int i = 5; i < 10; ++i)
        Alarm(i);
    clock.RunFor(9s);
    unit.Faults.Silent = true; // who knows what has become of that one
    clock.RunFor(150s);
    unit.Outcome = SmsOutcome::kSent;
    unit.Faults.Silent = false;
    ExpectAllSent(10, 2);
    EXPECT_EQ(Times(5), 2);
}

TEST_F(Fates, SixKillsLoseNothingAndAreTold) {
    StartToReady();
    for (int i = 0; i < 30; ++i) {
        Alarm(i);
        clock.RunFor(i % 2 ? 20s : 7s);
        if (i % 5 == 4)
            Kill();
    }
    EXPECT_GE(Said(" SMS that waited when the service ended were not sent, and are sent again"), 2);
    ExpectAllSent(30, 6);

    // Of full queues; what they have pushed out stands between.
    const std::int64_t last = history.Stored.rbegin()->first;
    const std::int64_t at = history.Stored.rbegin()->second.at;
    for (std::int64_t id = last + 1; id <= last + 700; ++id)
        history.Stored[id] = {.id = id,
                              .at = at,
                              .kind = "mail",
                              .fate = id % 2 ? "lost" : "pushed out",
                              .ended = at};
    Kill();
    EXPECT_EQ(service->Parts().messages.Waiting().size(), 350u);
}

TEST_F(Fates, WithoutTheSettingOrAfterAnHourALossIsFinal) {
    Set(u"Queue", u"SendAgain", u"Off");
    StartToReady();
    Alarm(0);
    clock.RunFor(0ms);
    service->Form_Unload();
    EXPECT_EQ(Said("1 SMS waits and is not sent: the service ends: tarnexctl history --unsent"), 1);
    service.reset();
    Set(u"Queue", u"SendAgain", u"On");
    clock.RunFor(61min);
    Kill();
    clock.RunFor(1s);
    for (auto& [id, row] : history.Stored) { // the clock has fallen back
        row.at += 1'000'000'000;
        row.ended += row.ended ? 1'000'000'000 : 0;
    }
    Kill();
    clock.RunFor(10min);
    EXPECT_EQ(Times(0), 0);
    EXPECT_EQ(Rows("lost"), 1u);
    const auto id = std::ranges::find(history.Stored, "lost", [](const auto& row) {
                        return row.second.fate;
                    })->first;
    const std::string name = std::to_string(id);
    const std::string answer = service->Answer("resend " + name + " " + name + " 999");
    EXPECT_EQ(answer, name + " is queued again\n" + name + " was sent again as " +
                          std::to_string(history.Stored.rbegin()->first) +
                          "\n999 is no message of the history\n");
    clock.RunFor(1min);
    EXPECT_EQ(Times(0), 1);

    for (std::int64_t each = id + 1000; each < id + 1160; ++each)
        history.Stored[each] = {.id = each, .kind = "SMS", .number = "1", .fate = "lost"};
    EXPECT_TRUE(service->Answer("resend").ends_with("again\n10 stay as they are: the rest of the "
                                                    "queue is for new messages. Ask again when "
                                                    "these are sent\n"));
}

TEST_F(Fates, WhatWaitedForHoursIsLostWithTheServiceOnceTheHistoryCanBeRead) {
    StartToReady();
    ports.Unplug(3);
    clock.RunFor(1min);
    Alarm(0);
    clock.RunFor(70min);
    history.Problem = "The history is locked.";
    Kill();
    clock.RunFor(1min);
    EXPECT_EQ(service->Answer("resend"), "The history is locked.\n");
    history.Problem.clear();
    ports.Plug(3, unit);
    ExpectAllSent(1, 0);
    EXPECT_EQ(Rows("lost"), 1u);
}

TEST_F(Fates, AHistoryThatFailsCostsNoMessage) {
    history.Problem = "The history is full.";
    StartToReady();
    Alarm(0);
    clock.RunFor(5s);
    ports.Unplug(3);
    clock.RunFor(1s);
    ports.Plug(3, unit);
    history.Problem.clear();
    Alarm(1);
    ExpectAllSent(2, 1);
    EXPECT_EQ(Said("The history is full. SMS and mails are sent all the same"), 1);
    EXPECT_EQ(Said("The history works again."), 1);
    EXPECT_EQ(Rows("sent"), 2u);
    EXPECT_EQ(Rows("dropped"), 1u);
}

} // namespace
} // namespace tarnex
