#include "tests/tools/tool_fixture.h"
#include "tools/ocx_debug.h"

namespace tarnex {
namespace {

struct ConsoleTest : ToolTest {
    void Connect() {
        console.Form_Load();
        Press(1);
        ASSERT_EQ(Enabled(), kAll);
    }
    // Presses a button and waits for its end.
    void Press(int number) {
        console.List1.Clear();
        heard.clear();
        console.Command(number).Click();
        EXPECT_TRUE(clock.RunUntil([&] { return console.Command(1).Enabled(); }, 10min));
    }
    std::string Enabled() {
        std::string enabled;
        for (int number = 1; number <= OCXDebug::kButtons; ++number)
            enabled += console.Command(number).Enabled() ? '1' : '0';
        return enabled;
    }
    const std::vector<Text>& Logged() const { return console.List1.Lines(); }

    const std::string kNone = std::string(45, '0');
    const std::string kAll = std::string(45, '1');
    const std::string kLinkAndLeave = "100001" + std::string(39, '0');
    OCXDebug console{world};
};

TEST_F(ConsoleTest, KeepsItsBoxes) {
    store.SetContent("[TarnexDebug]\nTelNo1=139\nTelNo2=138\nSMSCenter=+86\nTarnexName=a\n"
                     "Message=b\n");
    console.Form_Load();
    EXPECT_EQ(console.Text1.Value() + console.Text2.Value() + console.Text3.Value() +
                  console.Text4.Value() + console.Text5.Value() + console.Text7.Value(),
              u"139138+86ab2405065x0000");
    EXPECT_FALSE(console.Text6.Visible());
    console.Text1.SetValue(u"137");
    console.Text5.SetValue(u"测试");
    console.Text5.Leave();
    EXPECT_EQ(ini.GetIniStr(u"TarnexDebug", u"TelNo1"), u"137");
    EXPECT_EQ(ini.GetIniStr(u"TarnexDebug", u"Message"), u"测试");
}

TEST_F(ConsoleTest, WithoutAUnitOneCanOnlyConnectOrLeave) {
    console.Form_Load();
    EXPECT_EQ(Enabled(), kLinkAndLeave);
    unit.Faults.Silent = true;
    Press(1);
    EXPECT_EQ(Logged().back(), u"无法连接Tarnex.");
    EXPECT_EQ(Enabled(), kLinkAndLeave);
    unit.Faults.Silent = false;
    Press(1);
    EXPECT_EQ(Enabled(), kAll);
    Press(1);
    EXPECT_FALSE(ports.OpenSettings(3));
    EXPECT_EQ(Enabled(), kLinkAndLeave);
    Press(1);
    ports.Unplug(3);
    clock.RunFor(0s);
    EXPECT_EQ(Enabled(), kLinkAndLeave);
    ports.Plug(3, unit);
    Press(1);
    Press(6);
    clock.RunFor(0s);
    EXPECT_TRUE(ended);
    EXPECT_FALSE(ports.OpenSettings(3));
}

// What is read fills the box that the next button writes from.
TEST_F(ConsoleTest, EveryButtonSendsItsCommandAndListsTheAnswer) {
    Connect();
    unit.Memory.SmsCentre = "00610033";
    console.Text5.SetValue(u"a5");
    std::string sent;
    for (const int number :
         {2,  3,  4,  34, 24, 7,  8,  9,  35, 45, 10, 11, 12, 13, 14, 15, 16, 17, 18,
          19, 20, 21, 22, 23, 25, 26, 27, 28, 31, 32, 36, 37, 40, 38, 39, 42, 33, 5}) {
        Press(number);
        for (const std::string& command : heard)
            sent += command + " ";
        EXPECT_EQ(Logged().size(), number == 33 ? 4U : 2U) << number;
        EXPECT_NE(Logged().back(), u"Failed") << number;
    }
    EXPECT_EQ(sent, "RDNO1 RDNO2 RDCSCA RDName RDSerial WRNO1(13900000001) WRNO2(13900000002) "
                    "WRCSCA(00610033) WRName(673A0031) QorvexWsr(SIM00000002) "
                    "LCD1(This is Line 1.) LCD2(This is Line 2.) WRDT(1) WRDT(3) LCDFree RDDT "
                    "WRAT(1) WRAT(2) RDAT TXPWRON TXPWROFF TXCONON TXCONOFF RDALARM "
                    "SENDSMS1(673A00318BF4003A00610035) PCAlarm(Help me please!) PCAlarmOff RDCSQ "
                    "EnName RDNAMESt DisName Hello,tarnex ChkVer TXPWROFF TXCONOFF RESET ");
}

TEST_F(ConsoleTest, AllButtonsRestWhileACommandWaits) {
    Connect();
    unit.Faults.Silent = true;
    console.Command(18).Click();
    clock.RunFor(20s);
    EXPECT_EQ(Enabled(), kNone);
    clock.RunFor(1s);
    EXPECT_EQ(Logged().back(), u"Failed");
    EXPECT_EQ(Enabled(), kAll);
    console.Command(18).Click();
    clock.RunFor(1s);
    ports.Unplug(3);
    clock.RunFor(20s);
    EXPECT_EQ(Enabled(), kLinkAndLeave);
    console.Command(1).Click();
    clock.RunFor(1ms);
    console.Close();
    clock.RunFor(0s);
    EXPECT_EQ(ended, clock.Now());
}

TEST_F(ConsoleTest, InitialisesSendsAndWaitsWhileSmsAreListed) {
    Connect();
    Press(44);
    EXPECT_EQ(ini.GetIniStr(u"TarnexDebug", u"TarnexName"), u"脚脚(设备名)");
    clock.CallAfter(3s, [this] { unit.ReceiveSms(u"139", u"你好"); });
    Press(29);
    EXPECT_EQ(*(Logged().end() - 2), u"SendOK");
    std::string order;
    for (const std::string& command : heard)
        order += command.substr(0, 4) + " ";
    EXPECT_EQ(order.substr(0, 50), "LCD1 LCD2 WRNO WRNO WRCS PCAl WRDT WRAT TXCO SEND ");
    EXPECT_EQ(unit.Sent().back().text, u"脚脚(设备名)说:这是Tarnex OCXDebug发出的测试信息。");
    clock.RunFor(3s);
    ASSERT_EQ(console.List2.Lines().size(), 5U);
    EXPECT_EQ(console.List2.Lines()[1] + console.List2.Lines()[3], u"号码:139内容:你好");
}

TEST_F(ConsoleTest, ItsSerialNumberCountsUp) {
    Connect();
    for (const auto& [before, after] :
         {std::pair{u"2405065x0000", u"2405065x0001"}, std::pair{u"2405065x9999", u"2405065x10000"},
          std::pair{u"A12x4", u"A0013"}, std::pair{u"7", u"0008"}, std::pair{u"", u"0001"}}) {
        console.Text7.SetValue(before);
        Press(45);
        EXPECT_EQ(console.Text7.Value(), after);
        EXPECT_EQ(unit.Memory.Serial, ToUtf8(after));
    }
}

TEST_F(ConsoleTest, ShowsWhatTheDeviceLinkDoes) {
    Connect();
    for (const bool on : {true, false}) {
        Press(43);
        EXPECT_EQ(console.Command(43).Caption(), on ? u"关闭OCXDebug" : u"打开OCXDebug");
        EXPECT_EQ(console.DebugList.Visible() && console.TrafficList.Visible(), on);
        console.DebugList.Clear();
        console.TrafficList.Clear();
        Press(18);
        EXPECT_EQ(console.DebugList.Lines().empty(), !on);
        EXPECT_EQ(console.TrafficList.Lines().empty(), !on);
    }
}

TEST_F(ConsoleTest, UpgradesFromTheFixedFile) {
    Connect();
    Press(41);
    EXPECT_EQ(Logged().back(), u"设备程序没有改动。请更换文件。");
    EXPECT_TRUE(heard.empty());
    EXPECT_FALSE(ports.OpenSettings(3));
    EXPECT_EQ(Enabled(), kLinkAndLeave);

    files.Files["Tarnex_20050626.hex"] = files.Files["new.hex"];
    Press(1);
    unit.Boot();
    Press(41);
    EXPECT_EQ(Logged(), (std::vector<Text>{u"设备正在初始化,请稍候再试."}));
}

} // namespace
} // namespace tarnex
