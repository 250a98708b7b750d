#include "device/comm_port.h"
#include "device/command_sender.h"
#include "device/sms_modem.h"
#include "device/unit_events.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(AnswerRules, CheckAndCut) {
    EXPECT_EQ(CheckOK(u"OK,1"), kOk);
    EXPECT_EQ(CheckOK(u"O"), kFailed);
    EXPECT_EQ(CheckOK(u"ERROR OK"), kFailed);
    EXPECT_EQ(CutAnswer(u"NO1(12345)", u"NO1("), u"12345");
    EXPECT_EQ(CutAnswer(u"NO1()", u"NO1("), u"");
    EXPECT_EQ(CutAnswer(u"NO1(", u"NO1("), kFailed);
    EXPECT_EQ(CutAnswer(u"NO2(12345)", u"NO1("), kFailed);
}

TEST(AnswerRules, HexText) {
    EXPECT_EQ(HexEncode(u"中A"), u"4E2D0041");
    EXPECT_EQ(HexEncode(u"\t"), u"9"); // only two digits are padded
    EXPECT_EQ(HexEncode(u"\u0123"), u"123");
    EXPECT_EQ(HexDecode(u"00410042"), u"AB");
    EXPECT_EQ(HexDecode(u"4e2D"), u"中");
    EXPECT_EQ(HexDecode(u"004"), u"\u0004");
    EXPECT_EQ(HexDecode(u"0041xxxx0042"), u"AB"); // a bad group adds nothing
}

TEST(UnitEvents, FirstMatchDecides) {
    using enum UnitEvent;
    for (const auto& [text, event, word] : {
             std::tuple{u"TX:TXCSQ(23,0)", kSignal, u""},
             {u"noise TX:SENDOK", kSendOK, u""},
             {u"TX:SENDFAIL", kSendFail, u""},
             {u"TX:NOSimCard", kState, u"NoCard"},
             {u"TX:InitSysOk", kState, u"SYSOk"},
             {u"TX:InitGsmOk", kState, u"GSMOk"},
             {u"TX:Alarm(AC)", kState, u"ACLost"},
             {u"TX:Alarm(CON)", kState, u"CONLost"},
             {u"TX:Alarm(ACOK)", kState, u"ACOk"},
             {u"TX:SMRCV(x)", kReceivedSMS, u""},
             {u" TX:SMRCV(x)", kNone, u""},
             {u"", kNone, u""},
         }) {
        EXPECT_EQ(ClassifyLine(text).event, event) << ToUtf8(text);
        EXPECT_EQ(ClassifyLine(text).state_word, word) << ToUtf8(text);
    }
}

TEST(UnitEvents, SignalQuality) {
    EXPECT_EQ(SignalQuality(u"TX:TXCSQ(23,0)"), 23);
    EXPECT_EQ(SignalQuality(u"TX:TXCSQ( 7.6,0)"), 8);
    for (const TextView line : {u"TX:TXCSQ(,55)", u"TX:TXCSQ(5,)" /* two characters are too few */,
                                u"TX:TXCSQ(2345)", u"TX:TXCSQ(99999,0)", u"xTX:TXCSQ(23,0)"})
        EXPECT_EQ(SignalQuality(line), std::nullopt) << ToUtf8(line);
}

TEST(SMSRecord, IsCutByItsSeparatorsAndKeepsTheFieldsWithoutThem) {
    ReceivedSMS sms{.TelNo = u"1", .Date = u"2", .Time = u"3", .Msg = u"4"};
    for (const auto& [record, fields] : {
             std::pair<TextView, TextView>{u"TX:SMRCV(no separator at all", u"1 2 3 4"},
             {u"TX:SMRCV(,,,,\"OK", u"1 2 3 4"},        // too close: less than nothing between them
             {u"TX:SMRCV(x,\"0041\",,\"d", u"A 2 3 4"}, // cut off: what can be had is taken
             {u"TX:SMRCV(\"REC "
              u"UNREAD\",\"002B00380036\",,\"24/05/06,08:09:10+32\",4F60597D0020\r01OK)",
              u"+86 24/05/06 08:09:10 你好"},
         }) {
        CutSMSRecord(record, sms);
        EXPECT_EQ(sms.TelNo + u" " + sms.Date + u" " + sms.Time + u" " + sms.Msg, fields);
    }
}

TEST(LineBuffer, NoiseWithoutLineEndIsBounded) {
    LineBuffer buffer;
    const Text noise(LineBuffer::kLimit, u'x');
    EXPECT_TRUE(buffer.Append(noise));
    EXPECT_FALSE(buffer.Append(u"y"));
    EXPECT_TRUE(buffer.Append(u"TX:OK\r\nTX:"));
    EXPECT_EQ(buffer.TakeLine(), u"TX:OK");
    EXPECT_EQ(buffer.Waiting(), u"TX:");
}

} // namespace
} // namespace tarnex
