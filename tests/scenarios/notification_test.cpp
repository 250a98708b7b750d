#include "tests/scenarios/system_fixture.h"

namespace tarnex {
namespace {

class Notification : public SystemTest {
  protected:
    static MonitorEvent CpuAlarm() {
        return {.machine = 1,
                .service = 3,
                .state = 1,
                .by_sms = true,
                .by_mail = false,
                .machine_name = u"srv",
                .memo = u"98%"};
    }
    const Text kCpuText = u"设备1\"98%\"的CPU负荷异常(srv)。回复：1901重启设备，1902关闭设备。";
};

TEST_F(Notification, LeavesAsASMSAndStandsInTheLog) {
    StartToReady();
    clock.RunFor(10s);
    log.Rows.clear();
    monitor.SendEvent(CpuAlarm());
    clock.RunFor(20s);
    EXPECT_EQ(SentTexts(), std::vector<Text>{u"1" + kCpuText});
    ASSERT_EQ(log.Rows.size(), 1u);
    const LogRow expected{
        std::monostate(), Text(u"2024-05-06"), Text(u"08:00:40"), Text(u"Out"), Text(u"1Nex"),
        kCpuText,         Text(u"CPU负荷"),    Text(u"异常"),     Text(u""),    Text(u"Yes"),
        Text(u"No"),      Text(u"srv"),        Text(u"98%")};
    EXPECT_EQ(log.Rows[0], expected);
}

TEST_F(Notification, GoesToBothNumbersAsOftenAsConfiguredInPieces) {
    store.SetContent(
        settings.Set("Check", "Check1(43)", "1").Set("Combo", "Combo1(6)", "2").Content());
    StartToReady();
    MonitorEvent event = CpuAlarm();
    event.memo = Text(100, u'长');
    monitor.SendEvent(event);
    clock.RunFor(3min);
    const Text whole =
        u"设备1\"" + event.memo + u"\"的CPU负荷异常(srv)。回复：1901重启设备，1902关闭设备。";
    const Text pieces[] = {u"{1/3}" + whole.substr(0, 65), u"{2/3}" + whole.substr(65, 65),
                           u"{3/3}" + whole.substr(130)};
    ASSERT_EQ(whole.size() / 70 + 1, 3u);
    std::vector<Text> expected;
    for (int repetition = 0; repetition < 2; ++repetition)
        for (const Text& piece : pieces)
            for (const Text recipient : {u"1", u"2"})
                expected.push_back(recipient + piece);
    EXPECT_EQ(SentTexts(), expected);
}

TEST_F(Notification, AFailedSendIsTriedAgainAndGivenUpAfterTheFourth) {
    StartToReady();
    unit.Outcome = SmsOutcome::kFailed;
    monitor.SendEvent(CpuAlarm());
    clock.RunFor(5min);
    EXPECT_EQ(unit.Sent().size(), 4u);
    unit.Outcome = SmsOutcome::kSent;
    MonitorEvent next = CpuAlarm();
    next.memo = u"next";
    monitor.SendEvent(next);
    clock.RunFor(30s);
    ASSERT_EQ(unit.Sent().size(), 5u);
    EXPECT_TRUE(Contains(unit.Sent().back().text, u"\"next\""));
}

TEST_F(Notification, ASendWithoutReportIsLostAfter35Seconds) {
    StartToReady();
    unit.Outcome = SmsOutcome::kLost;
    monitor.SendEvent(CpuAlarm());
    ASSERT_TRUE(clock.RunUntil([&] { return unit.Sent().size() == 1; }, 10s));
    const Duration handed_over = clock.Now();
    ASSERT_TRUE(clock.RunUntil([&] { return unit.Sent().size() == 2; }, 2min));
    // 25 ms to the answer, 35 s, the next check at a multiple of 3 s, 8 s to the next send, 10 ms.
    EXPECT_EQ(clock.Now() - handed_over, 25ms + 36s + 8s + 10ms);
}

TEST_F(Notification, QuietTimeHoldsSMSButNeitherLogNorMail) {
    store.SetContent(settings.Set("Check", "Check1(6)", "1")
                         .Set("Check", "Check1(47)", "1") // Monday
                         .Set("Text", "Text1(40)", "8:00")
                         .Set("Text", "Text1(41)", "09:00")
                         .Content());
    StartToReady();
    monitor.SendEvent(CpuAlarm());
    clock.RunFor(1min);
    EXPECT_TRUE(unit.Sent().empty());
    clock.SetCalendar({.year = 2024, .month = 5, .day = 6, .hour = 9, .minute = 1});
    monitor.SendEvent(CpuAlarm());
    clock.RunFor(1min);
    EXPECT_EQ(unit.Sent().size(), 1u);
    EXPECT_EQ(Column(8).size(), 3u); // the greeting and both alarms
}

TEST_F(Notification, GreetingAndLossOfAMonitorAreEventsOfTheirOwn) {
    store.SetContent(
        settings.Set("Check", "Check1(5)", "1").Set("Alarm", "AlarmLabel(7)", "SMS").Content());
    StartToReady();
    EXPECT_EQ(Column(5), std::vector<Text>{u"设备1\"WebMon\"的通讯正常。"});
    clock.RunFor(10s);
    const Duration vanished = clock.Now();
    monitor.Stop();
    ASSERT_TRUE(clock.RunUntil([&] { return log.Rows.size() == 2; }, 1min));
    EXPECT_GE(clock.Now() - vanished, 30s);
    EXPECT_LE(clock.Now() - vanished, 40s);
    EXPECT_EQ(Column(5)[1], u"设备1\"WebMon\"的通讯丢失。");
    clock.RunFor(1min);
    EXPECT_EQ(SentTexts(), (std::vector<Text>{u"1设备1\"WebMon\"的通讯正常。",
                                              u"1设备1\"WebMon\"的通讯丢失。"}));
}

TEST_F(Notification, AThousandAtOnceAreAllLoggedInOrder) {
    StartToReady();
    log.Rows.clear();
    MonitorEvent event = CpuAlarm();
    for (int i = 0; i < 1000; ++i) {
        event.memo = ToText(i);
        monitor.SendEvent(event);
    }
    clock.RunFor(1s);
    ASSERT_EQ(log.Rows.size(), 1000u);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(Column(12)[std::size_t(i)], ToText(i));
}

TEST_F(Notification, WithoutALogDatabaseSMSStillLeave) {
    log.Problem = "the log database log.db is locked";
    StartToReady();
    monitor.SendEvent(CpuAlarm());
    clock.RunFor(1min);
    EXPECT_EQ(unit.Sent().size(), 1u);
    EXPECT_EQ(said.size(), 1u); // said once, however many rows are lost
    log.Problem.clear();
    clock.RunFor(10s);
    EXPECT_EQ(said.size(), 2u);
}

TEST_F(Notification, TheHandlingOfRubbishChangesNothing) {
    StartToReady();
    const std::size_t rows = log.Rows.size();
    for (const Text& rubbish : {Text(u""), Text(u"txSendSM"), Text(u"   "), Text(u"txHeartSvx"),
                                Text(60000, u'\0'), Text(u"tx-SMSEnd")})
        monitor.Send(rubbish);
    clock.RunFor(10s);
    EXPECT_EQ(log.Rows.size(), rows);
    monitor.Send(u"txSendSMS"); // an empty record is an event without flags
    monitor.Send(u"txSendSMS" + Text(30000, u'x'));
    clock.RunFor(1min);
    EXPECT_EQ(log.Rows.size(), rows + 2);
    EXPECT_TRUE(unit.Sent().empty());
}

} // namespace
} // namespace tarnex
