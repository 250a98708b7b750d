#include "operator/text_output.h"
#include "service/service_status.h"
#include "tests/operator/operator_fixture.h"

#include <regex>

#include <nlohmann/json.hpp>

namespace tarnex {
namespace {

class StatusCommands : public OperatorTest {
  protected:
    StatusCommands() {
        status.state.unit = {.phase = UnitPhase::kReady,
                             .since = 10min,
                             .port = 5,
                             .device = "/dev/ttyUSB0",
                             .signal = 17,
                             .level = u"4",
                             .version = u"TARNEX 1.0",
                             .serial = u"7\"8\x1b",
                             .steps = u"11111111111",
                             .restarts = 1};
        for (auto& link : status.state.links)
            link.listening = true;
        status.state.links[0].connected = status.state.links[0].sent_to = true;
        status.state.links[0].name = u"监控\x1b[31m\u202e";
        status.state.links[0].peer = Endpoint{"127.0.0.1", 4000};
        status.traffic[0] = {.last_sign = 3h - 7s, .received = 3, .sent = 4, .dropped = 1};
        status.state.sms.counts.Sent = 12;
        status.state.lost_rows = 2;
        Put();
    }
    void Put() {
        WriteFile(world.status_path, StatusText(status, {.process_id = 4711,
                                                         .settings_file = "/x/Tarnex.ini",
                                                         .now = 3h,
                                                         .wall_now = now - 5s}));
    }
    ServiceStatus status;
};

TEST_F(StatusCommands, ShowsEveryPart) {
    status.state.sms.held = u"2设备1\n";
    status.state.sms.attempt = 3;
    status.state.mail.failing = true;
    status.state.mail.last_problem = "no answer";
    status.state.troubles = {{.topic = "disk", .text = "The disk is full."}};
    Put();
    const std::string text = Output({"status", "--long"});
    for (const char* part :
         {"running for 3 h, process 4711", "last word 5 s ago", "ready\n", "for 2 h 50 min",
          "port COM5, /dev/ttyUSB0", "signal 17, level 4 of 5", "serial number 7\"8",
          "11 of 11 start-up steps done\n",
          "0  port 7840  监控\\x1B[31m\\u202E at 127.0.0.1:4000, heard 12 s ago; 1 datagram lost",
          "4  port 7844  nobody", "attempt 3 of 4 to number 2: 设备1\\n", "sent 12, given up 0",
          "failing: no answer", "none, rows lost 2", "The disk is full."})
        EXPECT_TRUE(Says(part)) << part << "\n" << text;
    EXPECT_EQ(text.find('\x1b'), std::string::npos);

    world.colours = true;
    status.state.unit.phase = UnitPhase::kSettingUp;
    status.state.unit.steps = u"11011111100";
    status.state.links[0].sent_to = false;
    status.state.links[1].listening = false;
    Put();
    Output({"status", "--long"});
    for (const char* part :
         {"\x1b[0m", "8 of 11 start-up steps done; missing: sms-centre, version, serial\n",
          "but not sent to", "1  port 7841  the port is not open"})
        EXPECT_TRUE(Says(part)) << part;
}

TEST_F(StatusCommands, TellsAServiceThatDoesNotRun) {
    service_process = 1;
    Fails(69, {"status"},
          "process 4711 has gone without an orderly end (a signal, a "
          "crash or a loss of power), and its last word is 5 s old");
    Run({"settings", "set", "run-allowed", "off"});
    Fails(69, {"status"}, "tarnexctl settings set run-allowed on");
    machine.kept_from_service = "its user may not read Tarnex.ini: chown";
    Fails(69, {"status"}, "its user may not read Tarnex.ini: chown, then start it with");
    EXPECT_EQ(Run({"doctor"}), 2);
    EXPECT_TRUE(Says("settings  file cannot be read by the service: its user may not"))
        << out.str();
    machine.lock_holder = {812, "process 812 (tarnex-console)"};
    Fails(69, {"status"}, "process 812 (tarnex-console) holds its lock");
    machine.lock_holder = {1, "process 1 (tarnexcomm)"};
    Fails(69, {"status"}, "process 1 (tarnexcomm) runs, but not by the status file");
    const json stopped = Answer({"status"});
    EXPECT_TRUE(stopped["absence"].get<std::string>().starts_with("process 1 (tarnexcomm)"));
    EXPECT_EQ(stopped["last_status"]["unit"]["state"], "ready");
    EXPECT_NE(Output({"metrics"}).find("\ntarnexcomm_up 0\n"), std::string::npos);
}

TEST_F(StatusCommands, IsShortOnATerminalAndOneLineForMonitoring) {
    status.state.links[0].name = u"监控";
    Put();
    std::istringstream lines(Output({"status"}));
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count)
        EXPECT_LE(DisplayWidth(line), 80u) << line;
    EXPECT_EQ(count, 8);
    EXPECT_TRUE(
        Says("Unit       ready for 2 h 50 min, signal 17 (4 of 5), at COM5 (/dev/ttyUSB0)"));
    EXPECT_TRUE(Says("Links      0 监控 (12 s)"));

    const auto checked = [this](int exit_status) {
        Put();
        EXPECT_EQ(Run({"status", "--check"}), exit_status) << out.str();
        return out.str();
    };
    EXPECT_EQ(checked(0).substr(0, 62),
              "OK: unit ready, signal 17 | signal=17;5:;;0;31 sms_queued=0;15");
    status.state.troubles = {{.topic = "log", .text = "A row | is lost."}};
    EXPECT_TRUE(checked(1).starts_with("WARNING: unit ready, signal 17; A row / is lost | "));
    status.state.troubles[0].level = NoticeLevel::kError;
    EXPECT_TRUE(checked(2).starts_with("CRITICAL: "));
    now += 3min;
    EXPECT_EQ(Run({"status", "--check"}), 2);
    EXPECT_TRUE(Says("; The service has not written its status for 3 minutes, ")) << out.str();
    service_process = 1;
    EXPECT_TRUE(checked(2).starts_with("CRITICAL: the service does not run"));
    WriteFile(world.status_path, "{}");
    EXPECT_EQ(Run({"status", "--check"}), 3);
    EXPECT_TRUE(out.str().starts_with("UNKNOWN: "));
    Fails(64, {"status", "--check", "--json"}, "goes without --watch, --long and --json");
}

TEST_F(StatusCommands, TheJsonHasLocalTimes) {
    ahead_of_utc = 8h;
    status.state.sms.held = u"2x";
    status.state.troubles = {{.topic = "log", .text = "A row is lost."}};
    Put();
    EXPECT_EQ(Answer({"status"})["written_at"], "2024-05-06T15:59:55+08:00");
}

TEST_F(StatusCommands, RefusesOtherFiles) {
    std::string whole = FileContent(world.status_path);
    const std::string begun = whole.substr(0, whole.rfind('}')) + ",\"more\":";
    const auto nested = [&](std::size_t depth) {
        return begun + std::string(depth, '[') + std::string(depth, ']') + "}";
    };
    WriteFile(world.status_path, nested(15) + std::string((1 << 20) - nested(15).size(), ' '));
    EXPECT_EQ(Run({"status", "--json"}), 0);
    for (const std::string& content :
         {std::string(), std::string("no json"), std::string("[]"), std::string("{\"format\": 1}"),
          std::string("{\"format\": 2, \"pid\": 4711, \"written_at\": \"now\"}"), nested(16),
          nested(200'000), whole.append((1 << 20) + 1 - whole.size(), ' ')}) {
        WriteFile(world.status_path, content);
        Fails(65, {"status"}, "status.json");
    }
}

TEST_F(StatusCommands, WatchShowsChangesOnly) {
    pauses_left = 3;
    on_pause = [this] {
        if (pauses_left == 2) {
            status.state.unit.phase = UnitPhase::kSearching;
            Put();
        }
    };
    std::istringstream lines(Output({"status", "--watch", "--json"}));
    std::string phases;
    for (std::string line; std::getline(lines, line);)
        phases += json::parse(line)["unit"]["state"].get<std::string>() + " ";
    EXPECT_EQ(phases, "ready searching ");
}

TEST_F(StatusCommands, MetricsAreGoodPrometheusText) {
    const std::string text = Output({"metrics"});
    const std::regex line(
        R"((# (HELP|TYPE) tarnexcomm_[a-z_]+ .+)|(tarnexcomm_[a-z_]+(\{([a-z_]+="([^"\\]|\\.)*",?)+\})? -?[0-9]+))");
    std::istringstream lines(text);
    std::string current;
    for (std::string each; std::getline(lines, each);) {
        EXPECT_TRUE(std::regex_match(each, line)) << each;
        if (each.starts_with("# HELP"))
            current = each.substr(7, each.find(' ', 7) - 7);
        EXPECT_TRUE(each.starts_with('#') || each.starts_with(current)); // a name stands together
    }
    for (const char* part :
         {"\ntarnexcomm_up 1\n", "\ntarnexcomm_unit_state{state=\"ready\"} 1\n",
          "\ntarnexcomm_unit_state{state=\"off\"} 0\n", "\ntarnexcomm_unit_signal 17\n",
          ",serial=\"7\\\"8\\\\x1B\"} 1\n", "\ntarnexcomm_sms_sent_total 12\n",
          "\ntarnexcomm_link_connected{link=\"0\"} 1\n",
          "\ntarnexcomm_link_last_heartbeat_time_seconds{link=\"0\"} 1714982388\n",
          "\ntarnexcomm_start_time_seconds 1714971595\n"})
        EXPECT_TRUE(Says(part)) << part;
    EXPECT_FALSE(Says("heartbeat_time_seconds{link=\"1\"}"));

    EXPECT_EQ(Output({"metrics", "--output", folder / "tarnexcomm.prom"}), "");
    EXPECT_EQ(FileContent(folder / "tarnexcomm.prom"), text);
    const auto full = std::make_error_code(std::errc::no_space_on_device);
    world.replace_file = [=](auto&&...) { return full; };
    Fails(73, {"metrics", "--output", folder / "more"},
          "(no space left on the device): free space");
#ifndef _WIN32
    std::filesystem::create_symlink("/dev/null", folder / "link"); // as /dev/stdout is one
    Fails(73, {"metrics", "--output", folder / "link"}, "link");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
#endif
}

} // namespace
} // namespace tarnex
