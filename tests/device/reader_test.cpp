#include "device/command_sender.h"
#include "tests/device/device_fixture.h"

namespace tarnex {
namespace {

struct ReaderTest : DeviceTest {
    std::vector<Text> Words() {
        std::vector<Text> words;
        for (Text word = core.GetComFifo(); word != kNoData; word = core.GetComFifo())
            words.push_back(word);
        return words;
    }
};

TEST_F(ReaderTest, LinesThatCameTogetherAreTakenOneEach200Milliseconds) {
    Open();
    device.SendAfter(0ms, "TX:Alarm(AC)\r\nTX:Alarm(CON)\r\nTX:Alarm(ACOK)\r\n");
    device.SendAfter(1s, "TX:Alarm(AC)\r\nTX:Alarm(CON)\r\n");
    device.SendAfter(1100ms, "TX:Alarm(ACOK)\r\n"); // held back until the next word is taken
    for (const auto& [word, at] : {std::pair{u"ACLost", 20ms},
                                   {u"CONLost", 220ms},
                                   {u"ACOk", 420ms},
                                   {u"ACLost", 1020ms},
                                   {u"CONLost", 1220ms},
                                   {u"ACOk", 1240ms}}) {
        clock.RunTo(start + at - 1ms);
        EXPECT_EQ(Words(), std::vector<Text>{}) << at.count();
        clock.RunFor(1ms);
        EXPECT_EQ(Words(), std::vector<Text>{word});
    }
}

TEST_F(ReaderTest, ALineInPiecesAndAHalvedCharacterAreJoined) {
    Open();
    lists.DebugOn = true;
    const std::string line = code_page.Encode(u"TX:AT(中)\r\n");
    device.SendAfter(100ms, line.substr(0, 7)); // cuts the character in two
    device.SendAfter(150ms, line.substr(7));
    EXPECT_EQ(Within(1s, core.commands.RDAT()), u"中");
    EXPECT_EQ(SinceStart(ended), 170ms);
    EXPECT_EQ(window.lines[List::kTraffic][1] + window.lines[List::kTraffic][2],
              u"Get :TX:AT(Get :中)\r\n");
}

TEST_F(ReaderTest, ACommandDiscardsHalfACharacterThatWaitsAndKeepsTheLineBeforeIt) {
    Open();
    device.Replies["~TX:ChkVer\r\n"] = "TX:Ver 1.0.0\r\n";
    device.SendAfter(5ms, "TX:Alarm(AC)\r\n\xC4");
    EXPECT_EQ(Within(1s, core.commands.ChkVer()), u"Ver 1.0.0");
    EXPECT_EQ(Words(), std::vector<Text>{u"ACLost"});
}

TEST_F(ReaderTest, EndlessNoiseNeitherBlocksNorGrows) {
    Open();
    for (int i = 0; i < 100; ++i)
        device.SendAfter(Duration(i * 20), std::string(900, '\x81'));
    device.SendAfter(5s, "\r\nTX:Alarm(AC)\r\n");
    clock.RunFor(6s);
    EXPECT_EQ(Words(), std::vector<Text>{u"ACLost"});
}

TEST_F(ReaderTest, StateWordsKeepTheNewestThirtyAndOneNoCard) {
    Open();
    const auto send = [&](const char* line) {
        device.SendAfter(0ms, line);
        clock.RunFor(20ms);
    };
    send("TX:NOSimCard\r\n");
    send("TX:NOSimCard\r\n");
    EXPECT_EQ(Words(), std::vector<Text>{u"NoCard"});
    send("TX:NOSimCard\r\n"); // the one before was read
    send("TX:InitSysOk\r\n");
    send("TX:NOSimCard\r\n");
    EXPECT_EQ(Words(), (std::vector<Text>{u"NoCard", u"SYSOk", u"NoCard"}));
    send("TX:Alarm(AC)\r\n");
    for (int i = 0; i < 30; ++i)
        send("TX:Alarm(CON)\r\n");
    EXPECT_EQ(Words(), std::vector<Text>(30, u"CONLost"));
    send("TX:Alarm(AC)\r\n");
    core.Init();
    EXPECT_EQ(Words(), std::vector<Text>{});
}

TEST_F(ReaderTest, InboxKeepsTheNewestTenAndTheFieldsOfTheLastTaken) {
    Open();
    EXPECT_EQ(core.sms.GetSMS(), kNoData);
    for (int i = 0; i < 11; ++i) {
        const std::string digit = ToUtf8(HexEncode(ToText(i)));
        device.SendAfter(0ms, "TX:SMRCV(\"0\",\"0031\",,\"24/05/06,08:00:00+32\"," + digit +
                                  ",01OK)\r\n");
        clock.RunFor(20ms);
    }
    for (int i = 1; i < 11; ++i) {
        EXPECT_EQ(core.sms.GetSMS(), u"NewMsg");
        EXPECT_EQ(core.sms.GetSMSMsg(), ToText(i));
    }
    EXPECT_EQ(core.sms.GetSMS(), kNoData);
    EXPECT_EQ(core.sms.GetSMSTelNo() + core.sms.GetSMSMsg(), u"110");
}

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
