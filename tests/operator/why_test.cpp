#include "tests/operator/operator_fixture.h"

#include <nlohmann/json.hpp>

namespace tarnex {
namespace {

using nlohmann::json;

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
        return json::parse(Output({"why", record, "--at", at, "--json"}));
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

} // namespace
} // namespace tarnex
