#include "device/command_sender.h"
#include "tests/device/device_fixture.h"

namespace tarnex {
namespace {

struct SMSTest : DeviceTest {
    std::optional<Text> Send() { return Within(30ms, core.sms.SendSMS(u"x", 1)); }
    void Reply(const char* answer) { device.Replies["~TX:SENDSMS1(0078)\r\n"] = answer; }
};

TEST_F(SMSTest, OutcomeIsReportedOnce) {
    Open();
    Reply("TX:ERROR\r\n");
    EXPECT_EQ(Send(), kFailed);
    EXPECT_EQ(core.sms.SMSSendChk(), u"Free");
    device.Heard.clear();
    Reply("TX:OK\r\n");
    EXPECT_EQ(Send(), u"OK");
    EXPECT_EQ(Send(), u"Busy");
    EXPECT_EQ(device.Heard.size(), 1u);
    EXPECT_EQ(core.sms.SMSSendChk(), u"Busy");
    device.SendAfter(0ms, "TX:SENDFAIL\r\n");
    clock.RunFor(2min); // the count-down has ended with the report
    EXPECT_EQ(core.sms.SMSSendChk(), u"SendFail");
    EXPECT_EQ(core.sms.SMSSendChk(), u"Free");
}

TEST_F(SMSTest, SilenceIsALostSendAndALateReportStillCounts) {
    Open();
    Reply("TX:OK\r\n");
    core.sms.SetSMSLostTime(3);
    EXPECT_EQ(Send(), u"OK");
    clock.RunFor(2999ms);
    EXPECT_EQ(core.sms.SMSSendChk(), u"Busy");
    device.SendAfter(1s, "TX:SENDOK\r\n");
    clock.RunFor(1ms); // the third tick makes it lost; not collected yet
    clock.RunFor(2s);
    EXPECT_EQ(core.sms.SMSSendChk(), u"SendOK");

    EXPECT_EQ(Send(), u"OK");
    clock.RunFor(3s);
    EXPECT_EQ(core.sms.SMSSendChk(), u"SendLost");

    EXPECT_EQ(Send(), u"OK");
    core.Init(); // forgets the open send
    EXPECT_EQ(core.sms.SMSSendChk(), u"Free");
}

} // namespace
} // namespace tarnex
