#include "tests/scenarios/system_fixture.h"
#include "tests/world.h"

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

} // namespace
} // namespace tarnex
