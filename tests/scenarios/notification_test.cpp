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

} // namespace
} // namespace tarnex
