#include "device/command_sender.h"
#include "tests/device/device_fixture.h"

namespace tarnex {
namespace {

using CommandTest = DeviceTest;

TEST_F(CommandTest, WaitsTenMillisecondsAndTakesTheAnswerTwentyAfterItBegan) {
    Open();
    device.SendAfter(0ms, "half a line, half a character\x81");
    clock.RunFor(1s);
    start = clock.Now();
    lists.DebugOn = true;
    device.Replies["~TX:RDNO1\r\n"] = "TX:NO1(13800138000)\r\n";
    device.Delay = 5ms;
    Running<Text> command(clock, core.commands.RDNO(u"1"));
    clock.RunFor(9ms);
    EXPECT_TRUE(device.Heard.empty());
    clock.RunFor(1s);
    EXPECT_EQ(command.result, u"13800138000");
    EXPECT_EQ(SinceStart(command.ended), 35ms);
    EXPECT_EQ(window.lines[List::kTraffic],
              (std::vector<Text>{u"Send:~TX:RDNO1\r\n", u"Get :TX:NO1(13800138000)\r\n"}));
}

TEST_F(CommandTest, WhatTheUnitSaysByItselfIsNoAnswer) {
    Open();
    device.SendAfter(100ms, "TX:TXCSQ(17,0)\r\n");
    device.SendAfter(200ms, "echo\r\n");
    device.SendAfter(300ms, "\r\n");
    device.SendAfter(400ms, "TX:OK\r\n");
    EXPECT_EQ(Within(1s, core.commands.PCAlarmOff()), u"OK");
    EXPECT_EQ(SinceStart(ended), 420ms);
}

TEST_F(CommandTest, ATakenAnswerSurvivesTheNextCommand) {
    Open();
    device.Replies["~TX:RDAT\r\n"] = "TX:AT(3)\r\n";
    Running<Text> first(clock, core.commands.RDAT());
    clock.RunFor(20ms); // the second command clears the slot at 30 ms, just when it was filled
    Running<Text> second(clock, core.commands.RDDT());
    clock.RunFor(10ms);
    EXPECT_EQ(first.result, u"3");
    Running<Text> third(clock, core.commands.RDDT());
    device.SendAfter(20ms, "TX:DT(4)\r\n");
    clock.RunFor(40ms);
    EXPECT_EQ(second.result, u"4"); // whoever waits takes it
    EXPECT_EQ(third.result, u"4");
}

TEST_F(CommandTest, SilenceFailsAfterTheWholeWaitWhichCommandsThatWaitTogetherRenew) {
    Open();
    Running<Text> first(clock, core.commands.RDAT());
    clock.RunFor(1s);
    Running<Text> second(clock, core.commands.RDDT());
    clock.RunFor(1min);
    EXPECT_EQ(first.result, kFailed);
    EXPECT_EQ(SinceStart(first.ended), 20010ms);
    EXPECT_EQ(SinceStart(second.ended), 40010ms);
}

// Counted by the command itself: the port tells of the loss only after it.
Task<int> LossesAtTheEnd(CommandSet& commands, const int& losses) {
    const Text answer = co_await commands.RDAT();
    co_return answer == kFailed ? losses : -1;
}

TEST_F(CommandTest, WithoutThePortACommandFailsAtOnce) {
    EXPECT_EQ(Within(10ms, LossesAtTheEnd(core.commands, losses)), 0); // closed
    EXPECT_EQ(Within(0ms, core.commands.RDCSQ()), u"-2");
    Open();
    clock.CallAfter(3s, [this] { ports.Unplug(7); }); // while it waits
    EXPECT_EQ(Within(3s, core.commands.RDAT()), kFailed);
    EXPECT_EQ(losses, 1);
    EXPECT_EQ(core.discovery.ConnectStatus(), 0);
    Open();
    lists.DebugOn = core.OCXDebug(u"On");
    clock.CallAfter(10ms, [this] { ports.Unplug(7); }); // just before it is written
    EXPECT_EQ(Within(10ms, LossesAtTheEnd(core.commands, losses)), 2);
    EXPECT_EQ(window.lines[List::kDevice].back(), u"sendtocom8021错误导致硬件丢失");
}

TEST_F(CommandTest, SwitchingTheTraceShowsItsLines) {
    Open();
    lists.DebugOn = true;
    EXPECT_TRUE(core.OCXDebug(u"On"));
    EXPECT_TRUE(core.OCXDebug(u"on")); // no such mode: it stays
    device.Replies["~TX:RDAT\r\n"] = "TX:AT(3)\r\n";
    Within(1s, core.commands.RDAT());
    EXPECT_EQ(
        window.lines[List::kDevice],
        (std::vector<Text>{u"********************", u"发送:~TX:RDAT\r\n", u"", u"读入:TX:AT(3)\r\n",
                           u"缓冲区:TX:AT(3)\r\n", u"0d0a位置:9", u"剩余字符串:",
                           u"---------------输出字符串:TX:AT(3)", u"GetComStr=TX:AT(3)"}));
    EXPECT_FALSE(core.OCXDebug(u"Off"));
}

TEST_F(CommandTest, EveryCommandHasItsWireTextAndResult) {
    using C = CommandSet;
    // clang-format off
    const struct {
        Task<Text> (*call)(CommandSet&);
        const char* wire;
        const char* answer;
        TextView result;
    } rows[] = {
        {[](C& c) { return c.LCD(u"0123456789ABCDEFGHIJKL", u"1"); }, "LCD1(0123456789ABCDEFGHIJ)", "OK", u"OK"},
        {[](C& c) { return c.LCD(u"x", u"2"); },            "LCD2(x)",            "OK",              u"OK"},
        {[](C& c) { return c.LCD(u"x", u"3"); },            "LCDFree",            "NO",              u"Failed"},
        {[](C& c) { return c.RDALARM(); },                  "RDALARM",            "ALARM(1)",        u"1"},
        {[](C& c) { return c.PCAlarm(u"012345678901234567890"); }, "PCAlarm(01234567890123456789)", "OK", u"OK"},
        {[](C& c) { return c.PCAlarmOff(); },               "PCAlarmOff",         "OK",              u"OK"},
        {[](C& c) { return c.ChkVer(); },                   "ChkVer",             "Ver 1.0.0",       u"Ver 1.0.0"},
        {[](C& c) { return c.ChkVer(); },                   "ChkVer",             "12345678",        u"Failed"},
        {[](C& c) { return c.RDNO(u"1"); },                 "RDNO1",              "NO1(139)",        u"139"},
        {[](C& c) { return c.RDNO(u"7"); },                 "RDNO2",              "NO2(138)",        u"138"},
        {[](C& c) { return c.WRNO(u"139", u"1"); },         "WRNO1(139)",         "OK",              u"OK"},
        {[](C& c) { return c.WRNO(u"138", u"2"); },         "WRNO2(138)",         "OK",              u"OK"},
        {[](C& c) { return c.WRDT(u"3"); },                 "WRDT(3)",            "OK",              u"OK"},
        {[](C& c) { return c.RDDT(); },                     "RDDT",               "DT(3)",           u"3"},
        {[](C& c) { return c.WRAT(u"2"); },                 "WRAT(2)",            "OK",              u"OK"},
        {[](C& c) { return c.RDAT(); },                     "RDAT",               "AT(2)",           u"2"},
        {[](C& c) { return c.TXPWR(u"On"); },               "TXPWRON",            "OK",              u"OK"},
        {[](C& c) { return c.TXPWR(u"on"); },               "TXPWROFF",           "OK",              u"OK"},
        {[](C& c) { return c.TXCON(u"On"); },               "TXCONON",            "OK",              u"OK"},
        {[](C& c) { return c.TXCON(u"Off"); },              "TXCONOFF",           "OK",              u"OK"},
        {[](C& c) { return c.WRCSCA(u"+1"); },              "WRCSCA(002B0031)",   "OK",              u"OK"},
        {[](C& c) { return c.RDCSCA(); },                   "RDCSCA",             "TXCSCA(002B0031)", u"+1"},
        {[](C& c) { return c.RESET(); },                    "RESET",              "xRESET OK",       u"OK"},
        {[](C& c) { return c.RESET(); },                    "RESET",              "OK",              u"Failed"},
        {[](C& c) { return c.WRName(u"机1"); },             "WRName(673A0031)",   "OK",              u"OK"},
        {[](C& c) { return c.RDName(); },                   "RDName",             "Name(673A0031)",  u"机1"},
        {[](C& c) { return c.NameMode(u"On"); },            "EnName",             "OK",              u"OK"},
        {[](C& c) { return c.NameMode(u"Off"); },           "DisName",            "OK",              u"OK"},
        {[](C& c) { return c.NameMode(u"Get"); },           "RDNAMESt",           "NameSt(1)",       u"1"},
        {[](C& c) { return c.NameMode(u"get"); },           "",                   "",                u""},
        {[](C& c) { return c.RDSerial(); },                 "RDSerial",           "Serial(24A)",     u"24A"},
        {[](C& c) { return c.WRSerial(u"24B"); },           "QorvexWsr(24B)",     "OK",              u"OK"},
        {[](C& c) { return c.SENDSMS(u"Hi", 1); },          "SENDSMS1(00480069)", "OK",              u"OK"},
        {[](C& c) { return c.SENDSMS(u"Hi", 0); },          "SENDSMS2(00480069)", "OK",              u"OK"},
    };
    // clang-format on
    Open();
    for (const auto& row : rows) {
        const std::string wire = "~TX:" + std::string(row.wire) + "\r\n";
        device.Replies = {{wire, "TX:" + std::string(row.answer) + "\r\n"}};
        device.Heard.clear();
        EXPECT_EQ(Within(1s, row.call(core.commands)), row.result) << row.wire;
        EXPECT_EQ(device.Heard, std::vector<std::string>(*row.wire ? 1 : 0, wire));
    }
}

TEST_F(CommandTest, SignalQueryReturnsWhatWasKnownBefore) {
    Open();
    EXPECT_EQ(Within(60s, core.commands.RDCSQ()), u"0");
    EXPECT_EQ(SinceStart(ended), 0ms); // no pause, no wait
    device.Replies["~TX:RDCSQ\r\n"] = "TX:TXCSQ(21,0)\r\n";
    EXPECT_EQ(Within(20ms, core.commands.RDCSQ()), u"-1"); // without any report
    EXPECT_EQ(Within(0ms, core.commands.RDCSQ()), u"21");
    device.Replies.clear();
    device.SendAfter(1s, "TX:TXCSQ(?)\r\n"); // a report all the same
    clock.RunFor(61019ms);                   // 60 s after the last report, to the millisecond
    EXPECT_EQ(Within(1ms, core.commands.RDCSQ()), u"21");
    EXPECT_EQ(Within(0ms, core.commands.RDCSQ()), u"-1");
    core.Init(); // does not forget the loss, but the port
    EXPECT_EQ(Within(0ms, core.commands.RDCSQ()), u"-1");
    EXPECT_EQ(core.discovery.ConnectStatus(), 0);
}

TEST_F(CommandTest, RawCommandsWaitForAnEmptyOutputBufferButNotForEver) {
    Open();
    ports.HoldOutput(7, true);
    EXPECT_EQ(Within(0ms, core.commands.RDCSQ()), u"0"); // nothing was waiting before it
    EXPECT_EQ(Within(1min, core.commands.RDCSQ()), u"-2");
    EXPECT_EQ(SinceStart(ended), 2s);
    Running<Text> restart(clock, core.commands.RESET_NOBACK());
    clock.RunFor(1s);
    ports.HoldOutput(7, false);
    clock.RunFor(1ms);
    EXPECT_EQ(device.Heard.back(), "~TX:RESET\r\n");
}

} // namespace
} // namespace tarnex
