#include "tests/scenarios/system_fixture.h"

namespace tarnex {
namespace {

struct SMSCommand : SystemTest {
    // The replies and forwarded texts that left within a minute and a half.
    std::vector<Text> Replies() {
        clock.RunFor(90s);
        return SentTexts();
    }
};

TEST_F(SMSCommand, IsConfirmedAndLoggedAndPassedOnUnlessItIsWrong) {
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
