#include "service/service_status.h"
#include "tests/operator/operator_fixture.h"

namespace tarnex {
namespace {

struct Examination : OperatorTest {
    Examination() {
        for (const char* number : {"alarm-number-1", "alarm-number-2"})
            Run({"settings", "set", number, "13900000001"});
        Run({"settings", "set", "com1-device", unit});
        machine.devices[unit] = {.there = true, .device = "/dev/ttyUSB0"};
        status.state.unit.phase = UnitPhase::kReady;
        status.state.unit.signal = 20;
        status.state.unit.version = u"V1";
        for (auto& link : status.state.links)
            link.listening = true;
        Put();
    }
    void Put() {
        WriteFile(world.status_path,
                  StatusText(status, {.process_id = 4711, .now = 0s, .wall_now = now}));
    }
    ServiceStatus status;
    const std::string unit = root + "dev/单元";
};

TEST_F(Examination, SaysOfEachPortWhatToDo) {
    machine.ports = {"/dev/serial/by-id/x"};
    const std::vector<std::pair<PortLook, std::string>> cases{
        {{.there = true, .device = "/d"}, "ok    COM1"},
        {{.device = "/d"}, unit + " is not there; there is: /dev/serial/by-id/x"},
        {{.there = true, .device = "/d", .what = "FTDI", .forbidden = "it is for the group root"},
         unit + " (FTDI) may not be opened by the service: it is for the group root"},
        {{.there = true, .device = "/d", .held_by = "process 812 (minicom)"},
         "is held by process 812 (minicom): end that program"},
        {{.there = true, .device = "/d", .held_by = "process 4711 (tarnexcomm)"}, unit + ", open"},
        {{.there = true, .device = "/d", .probed = true}, "is probed by a modem manager"},
    };
    for (const auto& [look, told] : cases) {
        machine.devices[unit] = look;
        Run({"doctor"});
        EXPECT_TRUE(Says(told)) << told << out.str();
    }
    const std::string same = root + "dev/same";
    Run({"settings", "set", "com2-device", same});
    machine.devices[same] = machine.devices[unit];
    Run({"doctor"});
    EXPECT_TRUE(Says(same + " is also COM1"));

    // The same of the settings, without what passes.
    EXPECT_EQ(Run({"settings", "check"}), 1);
    EXPECT_TRUE(Says("  " + same + " is also COM1") && !Says("modem manager"));
    machine.devices[unit].forbidden = "it is for the group root";
    const std::string nothing = root == "/" ? "/dev/null" : "nul"; // leaves a port alone
    for (const char* setting : {"com2-device", "com3-device"})
        Run({"settings", "set", setting, nothing});
    EXPECT_EQ(Run({"settings", "check"}), 2);
    EXPECT_TRUE(Says("com1-device") && !Says(nothing));
}

struct OneLoss : HistoryReader {
    Result<std::vector<HistoryRow>> Rows(const HistoryQuery&) override {
        return std::vector<HistoryRow>{{.id = 7}};
    }
};

TEST_F(Examination, LooksAtTheServiceAndTheMailServer) {
    world.history_path = settings; // that is there
    world.open_history = [](const std::string&) -> Result<std::unique_ptr<HistoryReader>> {
        return std::unique_ptr<HistoryReader>(std::make_unique<OneLoss>());
    };
    status.state.troubles = {{.topic = "card", .level = NoticeLevel::kError, .text = "No card."}};
    status.state.links[1].listening = status.state.links[2].listening = false;
    Put();
    mail_greeting = Trouble{"connection refused"};
    EXPECT_EQ(Run({"doctor"}), 2);
    for (const char* part :
         {"BAD   card", "No card.", "not open: 7841; 7842, held by process 812 (nc)",
          "connection refused", "rows up to 7, not sent in a day: 1"})
        EXPECT_TRUE(Says(part)) << part << out.str();
    WriteFile(settings, "no settings");
    EXPECT_EQ(Run({"doctor"}), 2);
    EXPECT_TRUE(Says("the service ends at once"));
}

// The service as it takes the alarm, sends its SMS and its mail, a step a pause.
TEST_F(Examination, ATestAlarmIsFollowedToItsEnd) {
    Run({"settings", "set", "sms-to-number-1", "on"});
    Run({"settings", "set", "sms-to-number-2", "off"});
    status.state.sms.queued = 1; // another's, which goes first
    Put();
    std::vector<std::function<void()>> steps{
        [this] { status.state.events.Events = 1; },
        [this] { status.state.sms.counts.Sent = 1; },
        [this] { status.state.mail.sent = 1; },
        [this] { status.state.sms.counts.Sent = 2; },
    };
    pauses_left = 4;
    on_pause = [&] {
        if (!steps.empty()) {
            steps.front()();
            steps.erase(steps.begin());
            Put();
        }
    };
    const std::string text = Output({"test"});
    EXPECT_EQ(datagrams, std::vector<std::string>{"txSendSMS1902011{[b^k^]}TarnexComm test"});
    for (const char* line : {"  1 s  the service has taken the alarm", "  3 s  the mail server",
                             "  4 s  1 of 1 SMS sent", "  4 s  all is well"})
        EXPECT_TRUE(Says(line)) << line << text;

    EXPECT_EQ(Run({"test", "--for", "1"}), 1); // nobody takes it
    EXPECT_TRUE(Says("not well: the service has not taken the alarm; the SMS have not left"));
    WriteFile(world.status_path, "{\"format\": 2, \"pid\": 4711, \"ended_at\": null, "
                                 "\"started_at\": 1714982400, \"written_at\": 1714982400}");
    Fails(65, {"test"}, "status.json lacks something");
    EXPECT_EQ(Run({"doctor"}), 2);
    EXPECT_TRUE(Says("status.json lacks something")) << out.str();
    service_process = 1;
    Fails(1, {"test"}, "the service does not run");
}

} // namespace
} // namespace tarnex
