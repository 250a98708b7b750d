#include "tests/scenarios/system_fixture.h"
#include "tests/world.h"

#include <algorithm>

namespace tarnex {
namespace {

struct Notification : SystemTest {
    void SendCpuAlarm() {
        monitor.SendEvent(
            {.service = 3, .state = 1, .by_mail = false, .machine_name = u"srv", .memo = u"98%"});
    }
};

TEST_F(Notification, LeavesAsASMSToWhoGetsThemNowAndStandsInTheLog) {
    StartToReady();
    clock.RunFor(10s);
    log.Rows.clear();
    SendCpuAlarm();
    clock.RunFor(20s);
    const Text text = u"设备1\"98%\"的CPU负荷异常(srv)。回复：1901重启设备，1902关闭设备。";
    EXPECT_EQ(SentTexts(), std::vector<Text>{u"1" + text});
    ASSERT_EQ(log.Rows.size(), 1u);
    EXPECT_EQ(RowText(log.Rows[0]),
              u"2024-05-06|08:00:40|Out|1Nex|" + text + u"|CPU负荷|异常||Yes|No|srv|98%");

    clock.RunTo(70001ms); // the reload at 70 s is over
    Set(u"Check", u"Check1(42)", u"0");
    clock.RunTo(79s); // the check of the unit has read it
    SendCpuAlarm();
    clock.RunFor(20s);
    EXPECT_EQ(unit.Sent().size(), 1u);
}

TEST_F(Notification, WithoutALogDatabaseSMSStillLeave) {
    log.Problem = "the log database log.db is locked";
    StartToReady();
    SendCpuAlarm();
    clock.RunFor(1min);
    EXPECT_EQ(unit.Sent().size(), 1u);
    EXPECT_EQ(said.size(), 1u); // said once, however many rows are lost
    log.Problem.clear();
    clock.RunFor(10s);
    EXPECT_EQ(said.size(), 2u);
}

struct SMSCommand : SystemTest {
    // The replies and forwarded texts that left within a minute and a half.
    std::vector<Text> Replies() {
        clock.RunFor(90s);
        return SentTexts();
    }
};

TEST_F(SMSCommand, IsConfirmedAndLoggedAndPassedOnUnlessItIsWrong) {
    Set(u"Debug", u"DebugMode", u"On");
    StartToReady();
    clock.RunTo(40s);
    log.Rows.clear();
    unit.ReceiveSms(u"+8613900000002", u"请 1301 谢谢");
    unit.ReceiveSms(u"13900000001", u"hello");
    const Text confirmed = u"系统在06日08:00收到命令：1301--1号设备web服务重启/开启";
    EXPECT_EQ(Replies(),
              (std::vector<Text>{u"2" + confirmed, u"1系统在06日08:00 收到错误命令：hello"}));
    std::vector<Text> logged;
    for (const LogRow& row : log.Rows)
        logged.push_back(std::get<Text>(row[5]));
    EXPECT_EQ(logged, (std::vector<Text>{u"1301", confirmed, u"ECmd",
                                         u"系统在06日08:00 收到错误命令：hello"}));
    const auto passed_on = [](const MonitorMessage& message) {
        return StartsWith(message.text, u"txControl");
    };
    EXPECT_EQ(std::ranges::count_if(monitor.Messages(), passed_on), 1);
    EXPECT_TRUE(monitor.Received(u"txControl1301"));
    EXPECT_EQ(std::ranges::count(Window().mList1.Lines(), u"确认消息:13012" + confirmed), 1);
}

TEST_F(SMSCommand, OfAStrangerIsOnlyForwardedWhenItIsAboutMoney) {
    StartToReady();
    const Text header = u"Tarnex转发来自号码10086的短消息，该条信息可能涉及缴费等信息。";
    unit.ReceiveSms(u"10086", u"1301");
    unit.ReceiveSms(u"10086", u"话费"); // only with the switch
    EXPECT_TRUE(Replies().empty());
    unit.ReceiveSms(u"10086", u"余额5元"); // always
    EXPECT_EQ(Replies(),
              (std::vector<Text>{u"1" + header, u"1余额5元", u"2" + header, u"2余额5元"}));
    EXPECT_EQ(log.Rows.size(), 5u); // the greeting and one row a part
    Set(u"Check", u"Check1(58)", u"1");
    clock.RunFor(10s);
    unit.ReceiveSms(u"10086", u"话费");
    EXPECT_EQ(Replies().size(), 8u);
}

TEST_F(SMSCommand, OneIsTakenATick) {
    StartToReady();
    clock.RunFor(1s); // to a time between two ticks
    for (const TextView text : {u"1301", u"1302", u"1311"})
        unit.ReceiveSms(u"13900000001", text);
    clock.RunFor(20s);
    const Duration first = ReceivedAt(u"txControl1301").value();
    EXPECT_EQ(ReceivedAt(u"txControl1302"), first + 5s);
    EXPECT_EQ(ReceivedAt(u"txControl1311"), first + 10s);
}

} // namespace
} // namespace tarnex
