#include "tests/notify/notify_rig.h"

namespace tarnex {
namespace {

using DispatcherTest = NotifyRig;

TEST_F(DispatcherTest, AnEventGoesToEveryPlaceThatWantsIt) {
    lists.DebugOn = settings.SwitchCheck43 = true;
    dispatcher.DispatchEvent(u"1302011srv{[b^k^]}Mon\r.\nQUIT");
    const Text text = u"设备1\"Mon\r.\nQUIT\"的web服务正常(srv)。";
    EXPECT_EQ(QueuedSMS(), (Texts{u"1" + text, u"2" + text}));
    EXPECT_EQ(mails, (Texts{u"2024-05-06 设备1\"Mon . QUIT\"的web服务正常(srv)。"}));
    ASSERT_EQ(table.Rows.size(), 1u);
    const Texts lines{u"",
                      u"解码:1302011srv{[b^k^]}Mon\r.\nQUIT",
                      u"MachineNo:1",
                      u"ServiceNo:30web服务",
                      u"StatusNo:2正常",
                      u"AutoNo:0",
                      u"SMSableNo:1",
                      u"EmailableNo:1",
                      u"MachineName:srv",
                      u"Memo:Mon\r.\nQUIT",
                      u"Email:" + text,
                      u"Log:" + text,
                      u"SMS1:" + text,
                      u"SMS2:" + text};
    EXPECT_EQ(window.lines[List::kEvents], lines);
}

TEST_F(DispatcherTest, WhatIsHeldBackIsLoggedAndCounted) {
    settings.QuietTimeOn = settings.QuietDay[1] = true;
    settings.QuietTimes[2] = settings.QuietTimes[3] = u"8:00";
    dispatcher.DispatchEvent(u"1302010");
    dispatcher.DispatchEvent(u"1302000");
    EXPECT_TRUE(QueuedSMS().empty() && mails.empty());
    EXPECT_EQ(table.Rows.size(), 2u);
    EXPECT_EQ(dispatcher.Totals(), (Dispatcher::Counts{.Events = 2, .HeldByQuiet = 1}));
    EXPECT_EQ(messages.Count(Fate::kHeldBack), 2u); // for each number
}

TEST_F(DispatcherTest, ARepetitionQueuesTheWholeSetAgain) {
    settings.SendCount = 2;
    settings.SwitchCheck43 = true;
    const Text memo(60, u'm');
    dispatcher.DispatchEvent(u"1302010{[b^k^]}" + memo);
    const Text text = u"设备1\"" + memo + u"\"的web服务正常。";
    const Text one = u"{1/2}" + text.substr(0, 65), two = u"{2/2}" + text.substr(65);
    const Texts once{u"1" + one, u"2" + one, u"1" + two, u"2" + two};
    Texts twice = once;
    twice.insert(twice.end(), once.begin(), once.end());
    EXPECT_EQ(QueuedSMS(), twice);
}

} // namespace
} // namespace tarnex
