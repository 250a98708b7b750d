#include "operator/record_explanation.h"
#include "simulator/simulated_monitor.h"
#include "simulator/system/system_in_memory.h"
#include "tests/operator/control_fixture.h"

#include <random>

#include <nlohmann/json.hpp>

namespace tarnex {
namespace {

using nlohmann::json;

class Why : public ControlTest {
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
        EXPECT_EQ(Run({"why", record, "--at", at, "--json"}), 0) << err.str();
        return json::parse(out.str());
    }
};

TEST_F(Why, TellsFieldsTextAndWays) {
    const json why = Ask("txSendSMS1031011srv{[b^k^]}98%");
    EXPECT_EQ(why["record"]["service"], 3);
    EXPECT_EQ(why["record"]["memo"], "98%");
    EXPECT_EQ(why["text"], "设备1\"98%\"的CPU负荷异常(srv)。回复：1901重启设备，1902关闭设备。");
    EXPECT_EQ(why["sms_in_all"], 4);
    EXPECT_EQ(why["sms"][1]["number"], "13900000002");
    EXPECT_EQ(why["mail"]["reasons"][1], "to c@d from a@b through mail");

    EXPECT_EQ(Run({"why", "1031011srv{[b^k^]}98%", "--at", "2024-05-06 08:00"}), 0);
    for (const char* part : {"service       3, CPU负荷\n", "number 1  yes  13900000001: ",
                             "one row  yes  a row goes to /", "now  it does not run\n"})
        EXPECT_TRUE(Says(part)) << part << out.str();
}

TEST_F(Why, NamesWhatHoldsAnSmsBack) {
    const struct {
        const char* record;
        const char* at;
        const char* setting; // first taken away or set: "name" or "name=value"
        const char* reason;  // of number 1
    } rows[] = {
        {"1031001{[b^k^]}", "2024-05-06 08:00", "", "the SMS flag of the record is not 1"},
        {"1031010{[b^k^]}", "2024-05-06 23:30", "", "it is quiet time"},
        {"1031010{[b^k^]}", "2024-05-06 08:00", "unit-link=off", "unit-link is off"},
        {"1031010{[b^k^]}", "2024-05-06 08:00", "send-count=0", "send-count is 0"},
        {"1031010{[b^k^]}", "2024-05-06 08:00", "sms-to-number-1", "sms-to-number-1 is off"},
    };
    const std::string good = FileContent(settings);
    for (const auto& row : rows) {
        WriteFile(settings, good);
        const std::string setting = row.setting;
        if (const std::size_t equals = setting.find('='); equals != setting.npos)
            Run({"settings", "set", setting.substr(0, equals), setting.substr(equals + 1)});
        else if (!setting.empty())
            Run({"settings", "unset", setting});
        const json sms = Ask(row.record, row.at)["sms"][0];
        EXPECT_EQ(sms["taken"], false) << row.reason;
        EXPECT_EQ(sms["reasons"], json::array({row.reason}));
    }
    WriteFile(settings, good);
    EXPECT_EQ(Ask("1031010{[b^k^]}", "2024-05-06 23:31")["sms"][0]["taken"], true);
    EXPECT_EQ(Ask("1031010{[b^k^]}", "2024-05-07 23:00")["quiet_reason"],
              "quiet time is not on for Tuesday");
    EXPECT_EQ(Run({"why", "1", "--at", "2024-02-30 10:00"}), 64);
    EXPECT_NE(Error().find("is no moment"), std::string::npos);
}

// What is explained is what the service does, whatever the settings and the record.
TEST_F(Why, AgreesWithTheService) {
    std::mt19937 random(1);
    const auto pick = [&random](int choices) { return int(random() % unsigned(choices)); };
    for (int round = 0; round < 150; ++round) {
        std::string content = "[Check]\nCheck1(13)=1\nCheck1(8)=1\n";
        for (const char* key : {"6", "7", "42", "43", "46", "47", "48"})
            if (pick(3) > 0)
                content += "Check1(" + std::string(key) + ")=" + std::to_string(pick(4) > 0) + "\n";
        content += "[Combo]\nCombo1(6)=" + std::to_string(pick(5) * (pick(4) ? 1 : 60) - 1) +
                   "\n[Text]\nText1(40)=" + std::to_string(pick(24)) +
                   ":00\nText1(41)=" + std::to_string(pick(24)) + ":30\nText1(37)=/x/log.db\n";
        WriteFile(settings, content);
        std::string record;
        for (const int choices : {10, 10, 4, 4, 5, 2, 2})
            record += char('0' + pick(choices));
        record += std::string(std::size_t(pick(90)), 'n') + "{[b^k^]}" +
                  std::string(std::size_t(pick(90)), 'm');
        const CalendarTime at{.year = 2024, .month = 5, .day = 5 + pick(3), .hour = pick(24)};

        SimulatedStatusSink sink;
        SystemInMemory system(content, "GBK", at);
        system.status = &sink;
        system.StartService();
        Monitor monitor(system.clock, system.network, system.code_page,
                        {.heartbeat = 0s, .greet_again = 0s});
        EXPECT_EQ(monitor.Start(), "");
        system.clock.RunFor(1s);
        monitor.Send(u"txSendSMS" + FromUtf8(record));
        system.clock.RunFor(1s);
        const RecordExplanation why =
            Explain(SettingsFile(settings), FromUtf8(record), system.clock.Calendar());
        const json status = json::parse(sink.Text);
        EXPECT_EQ(status["sms"]["queued"], std::min<std::size_t>(why.queued, 200))
            << content << record;
        EXPECT_EQ(status["mail"]["queued"], std::size_t(why.mail.taken)) << record;
        EXPECT_EQ(status["events"]["dispatched"], 2);
        EXPECT_EQ(system.log.Rows.size(), std::size_t(1 + why.log.taken)) << record; // a greeting
        if (why.log.taken) {
            EXPECT_EQ(system.log.Rows.back()[5], LogValue(why.text));
        }
    }
}

} // namespace
} // namespace tarnex
