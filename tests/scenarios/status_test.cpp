#include "tests/scenarios/system_fixture.h"

#include <nlohmann/json.hpp>

namespace tarnex {
namespace {

using nlohmann::json;

struct StatusText : SystemTest {
    StatusText() { status = &sink; }
    ~StatusText() override { service.reset(); } // before the sink
    json Now() const { return json::parse(sink.Text); }

    SimulatedStatusSink sink;
};

TEST_F(StatusText, TellsHowFarTheServiceIsWithTheUnit) {
    StartServiceAndMonitor();
    std::vector<std::string> phases;
    clock.RunUntil(
        [&] {
            if (!sink.Text.empty() && (phases.empty() || phases.back() != Now()["unit"]["state"]))
                phases.push_back(Now()["unit"]["state"]);
            return false;
        },
        1min);
    EXPECT_EQ(phases, (std::vector<std::string>{"searching", "greeting", "setting-up", "ready"}));
    const json unit = Now()["unit"];
    EXPECT_EQ(unit["port"], 3);
    EXPECT_EQ(unit["device"], "COM3");
    EXPECT_EQ(unit["signal"], 20);
    EXPECT_EQ(unit["version"], "TARNEX-SIM 1.0");
    EXPECT_EQ(unit["steps"], "11111111111");
    EXPECT_EQ(unit["restarts"], 0);
    EXPECT_EQ(Now()["pid"], 4711);

    this->unit.Boot();
    ASSERT_TRUE(clock.RunUntil([&] { return Now()["unit"]["state"] == "searching"; }, 1min));
    EXPECT_EQ(Now()["unit"]["signal"], nullptr);
    EXPECT_EQ(Now()["unit"]["restarts"], 1);
}

TEST_F(StatusText, FollowsLinksAndNotifications) {
    StartToReady();
    unit.Outcome = SmsOutcome::kFailed;
    monitor.SendEvent({.service = 3, .state = 1, .by_mail = false, .memo = u"98%"});
    monitor.Send(u"txHelloNx" + Text(60000, u'W'));
    clock.RunFor(20s);
    const json now = Now();
    const json link = now["links"][0];
    EXPECT_TRUE(link["connected"] && link["sent_to"] && link["listening"]);
    EXPECT_EQ(link["name"], std::string(64, 'W') + "…");
    EXPECT_FALSE(now["links"][1]["connected"]);
    EXPECT_EQ(now["links"][1]["last_heartbeat_at"], nullptr);
    EXPECT_EQ(now["sms"]["held"]["to_number"], 1);
    EXPECT_EQ(now["sms"]["held"]["text"],
              "设备1\"98%\"的CPU负荷异常。回复：1901重启设备，1902关闭设备。");
    EXPECT_EQ(now["sms"]["held"]["attempt"], 2);
    EXPECT_EQ(now["sms"]["last_result"], "SendFail");
    EXPECT_EQ(now["sms"]["attempts_failed"], 1);
    EXPECT_EQ(now["events"]["dispatched"], 3); // the greetings are two
    EXPECT_EQ(now["started_at"], 1714982400);  // 2024-05-06 08:00:00
    clock.RunFor(10min);
    const auto seconds = std::chrono::floor<std::chrono::seconds>(clock.Now()).count();
    EXPECT_LE(1714982400 + seconds - Now()["links"][0]["last_heartbeat_at"].get<long>(), 15);
}

TEST_F(StatusText, IsWrittenOnceASecondAtMostAndOnceAMinuteAtLeast) {
    StartService();
    clock.RunFor(1min);
    int before = sink.Writes;
    clock.RunFor(1h);
    EXPECT_EQ(sink.Writes - before, 60);

    ASSERT_EQ(monitor.Start(), "");
    clock.RunFor(2s);
    before = sink.Writes;
    for (int i = 0; i < 50; ++i) {
        monitor.SendEvent({.service = 3, .state = 1});
        clock.RunFor(100ms);
    }
    EXPECT_LE(sink.Writes - before, 6);
    clock.RunFor(1s); // the last change is not left out
    EXPECT_EQ(Now()["events"]["dispatched"], 51);
}

TEST_F(StatusText, NeverHarmsTheService) {
    sink.Problem = "The status file cannot be written.";
    StartToReady();
    EXPECT_EQ(std::ranges::count(said, sink.Problem), 1);
    sink.Problem.clear();
    unit.Boot();
    ASSERT_TRUE(clock.RunUntil([this] { return !State().UnitReady; }, 20s));
    ASSERT_TRUE(RunUntilReady(1min));
    clock.RunFor(1s);
    EXPECT_EQ(std::ranges::count(said, "The status file can be written again."), 1);
    EXPECT_TRUE(Now()["troubles"].empty()) << Now()["troubles"];
}

TEST_F(StatusText, EndsWithTheServiceAndASecondInstanceEndsSilently) {
    StartToReady();
    service->Form_Unload();
    clock.RunFor(1s);
    EXPECT_EQ(Now()["ended_at"], Now()["written_at"]);

    service.reset();
    ended_at.reset();
    controller.Log.clear();
    const int opened = log.Opened;
    sink.Text = "of the other instance";
    lock.HeldByAnother = true;
    StartService();
    const Duration start = clock.Now();
    clock.RunFor(1min);
    EXPECT_EQ(ended_at, start);
    EXPECT_EQ(controller.Log, std::vector<std::string>{"start 2"});
    EXPECT_TRUE(said.empty());
    EXPECT_EQ(log.Opened, opened);
    EXPECT_EQ(sink.Text, "of the other instance");
}

} // namespace
} // namespace tarnex
