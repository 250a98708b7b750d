#include "operator/dry_run.h"
#include "tests/operator/operator_fixture.h"

#include <nlohmann/json.hpp>

namespace tarnex {
namespace {

class Why : public OperatorTest {
  protected:
    Why() {
        WriteFile(folder / "log.db", "");
        WriteFile(settings, "[Check]\nCheck1(13)=1\nCheck1(42)=1\nCheck1(43)=1\nCheck1(6)=1\n"
                            "Check1(47)=1\n[Text]\nText1(34)=13900000001\nText1(35)=13900000002\n"
                            "Text1(40)=22:00\nText1(41)=23:30\nText1(29)=mail\nText1(58)=a@b\n"
                            "Text1(59)=c@d\nText1(37)=" +
                                folder / "log.db\n[Combo]\nCombo1(6)=2\n");
    }
    json Ask(const std::string& record, const std::string& at = "2024-05-06 08:00") {
        return Answer({"why", record, "--at", at});
    }
};

TEST_F(Why, TellsFieldsTextAndWays) {
    const json why = Ask("txSendSMS1031011srv{[b^k^]}98%");
    EXPECT_EQ(why["record"]["service"], 3);
    EXPECT_EQ(why["record"]["memo"], "98%");
    EXPECT_EQ(why["record"]["sms_flag"], 1);
    EXPECT_EQ(why["at"], "2024-05-06T08:00:00+00:00");
    EXPECT_EQ(why["text"], "设备1\"98%\"的CPU负荷异常(srv)。回复：1901重启设备，1902关闭设备。");
    EXPECT_EQ(why["sms_in_all"], 4);
    EXPECT_EQ(why["sms"][1]["number"], "13900000002");
    EXPECT_EQ(why["mail"]["reasons"][1], "to c@d from a@b through mail");

    EXPECT_EQ(Run({"why", "1031011srv{[b^k^]}98%", "--at", "2024-05-06 08:00"}), 0);
    for (const char* part : {"service       3, CPU负荷\n", "number 1  yes  13900000001: ",
                             "one row  yes  a row goes to ", "now  it does not run\n"})
        EXPECT_TRUE(Says(part)) << part << out.str();
}

TEST_F(Why, NamesWhatHoldsAnSmsBack) {
    EXPECT_EQ(Ask("1031010{[b^k^]}", "2024-05-07 23:00")["quiet_reason"],
              "quiet time is not on for Tuesday");
    for (const char* setting : {"unit-link", "sms-to-number-1"})
        Run({"settings", "set", setting, "off"});
    Run({"settings", "set", "send-count", "0"});
    const json sms = Ask("1031001{[b^k^]}", "2024-05-06 23:30")["sms"];
    json reasons{"the SMS flag of the record is not 1", "it is quiet time", "unit-link is off",
                 "send-count is 0"};
    EXPECT_EQ(sms[1]["reasons"], reasons);
    reasons.push_back("sms-to-number-1 is off");
    EXPECT_EQ(sms[0]["reasons"], reasons);
    EXPECT_EQ(sms[0]["taken"], false);

    Fails(64, {"why", "1", "--at", "2024-02-30 10:00"}, "is no moment");
}

TEST(AlarmPlan, IsPlausibleAndTheSameForASeed) {
    const std::vector<PlannedAlarm> alarms = PlanAlarms(60, 5);
    EXPECT_GT(alarms.size(), 150u);
    EXPECT_LT(alarms.size(), 350u);
    EXPECT_TRUE(std::ranges::is_sorted(alarms, {}, &PlannedAlarm::at));
    EXPECT_LT(alarms.back().at, 60 * 24h);
    std::map<std::pair<int, Text>, int> open; // troubles that were not reported as over yet
    for (const PlannedAlarm& alarm : alarms)
        if (alarm.event.state == 2)
            EXPECT_EQ((open[{alarm.event.service, alarm.event.memo}]--), 1);
        else if (alarm.event.service != 1 && alarm.event.service != 20 && alarm.event.service != 50)
            ++open[{alarm.event.service, alarm.event.memo}];

    EXPECT_EQ(PlanAlarms(7, 1)[1].at, PlanAlarms(7, 1)[1].at);
    EXPECT_NE(PlanAlarms(7, 1)[1].at, PlanAlarms(7, 2)[1].at);
}

class Simulation : public OperatorTest {
  protected:
    Simulation() {
        for (const char* setting : {"sms-to-number-1", "sms-to-number-2"})
            Run({"settings", "set", setting, "on"});
        for (const char* number : {"alarm-number-1", "alarm-number-2"})
            Run({"settings", "set", number, "13900000001"});
        Run({"settings", "set", "mail-from", "a@b.example"});
        Run({"settings", "set", "mail-to", "c@d.example"});
    }
    // Alarms of a minute each, from start on.
    DryRunResult RunAlarms(int count, const CalendarTime& start) {
        std::vector<PlannedAlarm> alarms;
        for (int i = 1; i <= count; ++i)
            alarms.push_back({i * 1min, {.service = 30, .state = 1, .memo = ToText(i)}});
        return RunDry(SettingsFile(world), start, 0, alarms, [](int) {});
    }
    const CalendarTime monday_night{.year = 2024, .month = 5, .day = 6, .hour = 22, .minute = 50};
};

TEST_F(Simulation, AlarmsLeaveOnTheWaysThatTheSettingsGive) {
    for (const char* switched : {"quiet-time", "quiet-monday", "link-events-by-sms"})
        Run({"settings", "set", switched, "on"});
    Run({"settings", "set", "quiet-monday-to", "22:53"});
    Run({"settings", "set", "send-count", "2"});
    DryRunResult result = RunAlarms(5, monday_night);
    ASSERT_EQ(result.alarms.size(), 5u);
    for (std::size_t i = 0; i < 5; ++i) {
        const bool quiet = i < 3; // 22:51 to 22:53
        EXPECT_EQ(result.alarms[i].sms_sent, quiet ? 0u : 4u) << i;
        EXPECT_EQ(result.alarms[i].held_back.size(), quiet ? 1u : 0u);
    }
    EXPECT_GE(result.alarms[3].wait, 3 * 8s); // a send of the queue each 8 s at most
    EXPECT_EQ(result.mails, 5u);
    EXPECT_EQ(result.log_rows, 6u); // the greeting is one
    EXPECT_TRUE(result.said.empty());

    Run({"settings", "unset", "mail-server"});
    result = RunAlarms(1, monday_night);
    EXPECT_TRUE(result.alarms[0].mail_queued && !result.alarms[0].mail_sent);
    EXPECT_EQ(result.said.size(), 1u); // mails have nowhere to go
}

TEST_F(Simulation, ReportsAndShowsProgressToAPersonWhoWaits) {
    world.progress = true;
    world.now = [this] { return now += 1000ms; };
    const json result = Answer({"simulate", "--days", "1", "--start", "2024-05-06"});
    EXPECT_EQ(err.str(), "\rday 1 of 1\r\x1b[K");
    std::size_t sent = 0;
    for (const json& alarm : result["alarms"]) {
        EXPECT_TRUE(alarm["at"].get<std::string>().starts_with("2024-05-06T"));
        sent += alarm["sms_sent"].get<std::size_t>();
    }
    EXPECT_EQ(result["alarms_by_sms"], result["alarms"].size());
    EXPECT_EQ(result["sms_sent"], sent);
    EXPECT_GT(sent, 0u);

    Fails(64, {"simulate", "--days", "367"}, "");
    Run({"settings", "unset", "run-allowed"});
    Fails(65, {"simulate"}, "ends at once");
}

} // namespace
} // namespace tarnex
