#include "device/answer_rules.h"
#include "tests/device/device_fixture.h"

namespace tarnex {
namespace {

class SMSTest : public DeviceTest {
  protected:
    Text Send(const Text& text, int target) {
        Running<Text> send(clock, core.sms.SendSMS(text, target));
        clock.RunFor(30ms);
        return send.result.value_or(u"waits");
    }
    void Reply(const char* answer) { device.Replies["~TX:SENDSMS1(0078)\r\n"] = answer; }
};

TEST_F(SMSTest, OutcomeIsReportedOnce) {
    Open();
    Reply("TX:OK\r\n");
    EXPECT_EQ(core.sms.SMSSendChk(), u"Free");
    EXPECT_EQ(Send(u"x", 1), u"OK");
    EXPECT_EQ(Send(u"x", 1), u"Busy");
    EXPECT_EQ(device.Heard.size(), 1u);
    EXPECT_EQ(core.sms.SMSSendChk(), u"Busy");
    device.SendAfter(0ms, "TX:SENDFAIL\r\n");
    clock.RunFor(2min); // the count-down has ended with the report
    EXPECT_EQ(core.sms.SMSSendChk(), u"SendFail");
    EXPECT_EQ(core.sms.SMSSendChk(), u"Free");
}

TEST_F(SMSTest, ARefusedTextLeavesTheModemFree) {
    Open();
    Reply("TX:ERROR\r\n");
    EXPECT_EQ(Send(u"x", 1), kFailed);
    EXPECT_EQ(core.sms.SMSSendChk(), u"Free");
}

TEST_F(SMSTest, SilenceIsALostSendAndALateReportStillCounts) {
    Open();
    Reply("TX:OK\r\n");
    core.sms.SetSMSLostTime(3);
    EXPECT_EQ(Send(u"x", 1), u"OK");
    clock.RunFor(2999ms);
    EXPECT_EQ(core.sms.SMSSendChk(), u"Busy");
    device.SendAfter(1s, "TX:SENDOK\r\n");
    clock.RunFor(1ms); // the third tick makes it lost; not collected yet
    clock.RunFor(2s);
    EXPECT_EQ(core.sms.SMSSendChk(), u"SendOK");

    EXPECT_EQ(Send(u"x", 1), u"OK");
    clock.RunFor(3s);
    EXPECT_EQ(core.sms.SMSSendChk(), u"SendLost");
}

TEST_F(SMSTest, ResetForgetsTheOpenSend) {
    Open();
    Reply("TX:OK\r\n");
    EXPECT_EQ(Send(u"x", 1), u"OK");
    core.Init();
    EXPECT_EQ(core.sms.SMSSendChk(), u"Free");
}

} // namespace
} // namespace tarnex
