#include "tests/tools/tool_fixture.h"
#include "tools/ocx_debug.h"

namespace tarnex {
namespace {

class ConsoleTest : public ToolTest {
  protected:
    void Connect() {
        console.Form_Load();
        console.Command(1).Click();
        clock.RunFor(1s);
        ASSERT_EQ(console.Command(1).Caption(), u"断开Tarnex");
        Forget();
    }
    void Forget() {
        console.List1.Clear();
        heard.clear();
    }
    // Presses a button and waits for its end: all of them are enabled again then.
    void Press(int number) {
        Forget();
        console.Command(number).Click();
        EXPECT_TRUE(clock.RunUntil([&] { return console.Command(1).Enabled(); }, 10min));
    }
    std::string Enabled() const {
        std::string enabled;
        for (int number = 1; number <= OCXDebug::kButtons; ++number)
            enabled += console.Command(number).Enabled() ? '1' : '0';
        return enabled;
    }
    const std::vector<Text>& Logged() const { return console.List1.Lines(); }
    Text Setting(TextView key) { return MyIniFile(store, gbk).GetIniStr(u"TarnexDebug", key); }

    mutable OCXDebug console{world};
};

const std::string kAll(45, '1');
const std::string kLinkAndLeave = "100001" + std::string(39, '0');

TEST_F(ConsoleTest, OpensWithItsBoxesAndNothingToDoButToConnect) {
    MyIniFile ini(store, gbk);
    ini.WriteIniStr(u"TarnexDebug", u"TelNo1", u"139");
    ini.WriteIniStr(u"TarnexDebug", u"TelNo2", u"138");
    ini.WriteIniStr(u"TarnexDebug", u"SMSCenter", u"+86");
    ini.WriteIniStr(u"TarnexDebug", u"TarnexName", u"机1");
    ini.WriteIniStr(u"TarnexDebug", u"Message", u"测试");
    console.Form_Load();
    EXPECT_EQ(console.Text1.Value() + console.Text2.Value() + console.Text3.Value() +
                  console.Text4.Value() + console.Text5.Value(),
              u"139138+86机1测试");
    EXPECT_EQ(console.Text7.Value(), u"2405065x0000");
    EXPECT_FALSE(console.Text6.Visible());
    EXPECT_EQ(console.Width(), 9915);
    EXPECT_EQ(Enabled(), kLinkAndLeave);
    for (int number = 1; number <= OCXDebug::kButtons; ++number)
        EXPECT_FALSE(console.Command(number).Caption().empty()) << number;
}

TEST_F(ConsoleTest, SavesAllBoxesWhenOneIsLeft) {
    console.Form_Load();
    console.Text1.SetValue(u"139");
    console.Text5.SetValue(u"测试");
    EXPECT_EQ(Setting(u"TelNo1"), u"");
    console.Text5.Leave();
    EXPECT_EQ(Setting(u"TelNo1"), u"139");
    EXPECT_EQ(Setting(u"Message"), u"测试");
}

TEST_F(ConsoleTest, ConnectsAndDisconnects) {
    Connect();
    EXPECT_EQ(Enabled(), kAll);
    Press(1);
    EXPECT_EQ(Logged(),
              (std::vector<Text>{u"正在断开Tarnex.", u"已经断开Tarnex.", u"------------------"}));
    EXPECT_EQ(console.Command(1).Caption(), u"连接Tarnex");
    EXPECT_EQ(Enabled(), kLinkAndLeave);
    unit.Faults.Silent = true;
    Press(1);
    EXPECT_EQ(Logged(), (std::vector<Text>{u"正在连接Tarnex.", u"无法连接Tarnex."}));
    unit.Faults.Silent = false;
    Press(1);
    EXPECT_EQ(Logged(), (std::vector<Text>{u"正在连接Tarnex.", u"已在Com3成功连接Tarnex."}));
    ports.Unplug(3);
    clock.RunFor(0s);
    EXPECT_EQ(console.Command(1).Caption(), u"连接Tarnex");
}

struct ButtonRow {
    int number;
    const char* wire;
    TextView label;
    TextView answer;
};

TEST_F(ConsoleTest, EveryButtonSaysWhatItDoesAndWhatTheUnitAnswered) {
    // clang-format off
    const ButtonRow rows[] = {
        {2,  "RDNO1",                     u"读第一报警电话",   u"13900000001"}, // into the boxes,
        {3,  "RDNO2",                     u"读第二报警电话",   u"13900000002"},
        {4,  "RDCSCA",                    u"读取短消息中心",   u"a3"},
        {34, "RDName",                    u"读取Name参数",     u"机1"},
        {24, "RDSerial",                  u"读序列号",         u"SIM00000001"},
        {7,  "WRNO1(13900000001)",        u"写电话号码1",      u"OK"}, // and out of them
        {8,  "WRNO2(13900000002)",        u"写电话号码2",      u"OK"},
        {9,  "WRCSCA(00610033)",          u"写短消息中心",     u"OK"},
        {35, "WRName(673A0031)",          u"写入Name",         u"OK"},
        {45, "QorvexWsr(SIM00000002)",    u"写序列号",         u"OK"},
        {10, "LCD1(This is Line 1.)",     u"LCD1测试",         u"OK"},
        {11, "LCD2(This is Line 2.)",     u"LCD2测试",         u"OK"},
        {12, "WRDT(1)",                   u"写通讯报警1分",    u"OK"},
        {13, "WRDT(3)",                   u"写通讯报警3分",    u"OK"},
        {14, "LCDFree",                   u"LCD控制释放",      u"OK"},
        {15, "RDDT",                      u"读通讯报警时间",   u"3"},
        {16, "WRAT(1)",                   u"写报警次数1",      u"OK"},
        {17, "WRAT(2)",                   u"写报警次数2",      u"OK"},
        {18, "RDAT",                      u"读报警次数",       u"2"},
        {19, "TXPWRON",                   u"打开通讯报警",     u"OK"},
        {20, "TXPWROFF",                  u"关闭电源报警",     u"OK"},
        {21, "TXCONON",                   u"打开电源报警",     u"OK"},
        {22, "TXCONOFF",                  u"关闭通讯报警",     u"OK"},
        {23, "RDALARM",                   u"读报警状态",       u"0"},
        {25, "SENDSMS1(673A00318BF4003A00610035)", u"向第一报警发信", u"OK"},
        {26, "",                          u"向第二报警发信",   u"Busy"},
        {27, "",                          u"读取短信发送状态", u"Busy"},
        {28, "",                          u"读取Tarnex发出命令", u"NoData"},
        {31, "PCAlarm(Help me please!)",  u"发送PC报警",       u"OK"},
        {32, "PCAlarmOff",                u"解除PC报警",       u"OK"},
        {36, "RDCSQ",                     u"读取CSQ",          u"0"},
        {37, "EnName",                    u"允许Name",         u"OK"},
        {40, "RDNAMESt",                  u"读取Name状态",     u"1"},
        {38, "DisName",                   u"禁止Name",         u"OK"},
        {39, "Hello,tarnex",              u"Hello, tarnex",    u"OK"},
        {42, "ChkVer",                    u"读取硬件版本",     u"TARNEX-SIM 1.0"},
        {5,  "RESET",                     u"复位Tarnex",       u"OK"},
    };
    // clang-format on
    Connect();
    unit.Memory.SmsCentre = "00610033";
    console.Text5.SetValue(u"a5");
    for (const ButtonRow& row : rows) {
        Press(row.number);
        EXPECT_EQ(Logged(), (std::vector<Text>{Text(row.label), Text(row.answer)})) << row.number;
        const std::string wire = row.wire;
        EXPECT_EQ(heard, wire.empty() ? std::vector<std::string>() : std::vector{wire});
    }
    EXPECT_EQ(console.Text7.Value(), u"SIM00000002");
}

TEST_F(ConsoleTest, AllButtonsRestWhileACommandWaits) {
    Connect();
    unit.Faults.Silent = true;
    console.Command(18).Click();
    EXPECT_EQ(Enabled(), std::string(45, '0'));
    clock.RunFor(20s);
    EXPECT_EQ(Enabled(), std::string(45, '0'));
    clock.RunFor(1s);
    EXPECT_EQ(Logged().back(), u"Failed");
    EXPECT_EQ(Enabled(), kAll);
    console.Command(18).Click();
    clock.RunFor(1s);
    ports.Unplug(3);
    clock.RunFor(20s);
    EXPECT_EQ(console.Command(1).Caption(), u"连接Tarnex");
    EXPECT_EQ(Enabled(), kLinkAndLeave);
    console.Command(1).Click();
    clock.RunFor(1ms);
    console.Close();
    clock.RunFor(0s);
    EXPECT_EQ(ended, clock.Now());
}

TEST_F(ConsoleTest, SendsAndWaitsWhileTheLoopRuns) {
    Connect();
    Press(44);
    console.Command(29).Click();
    clock.RunFor(3s);
    EXPECT_EQ(Enabled(), std::string(45, '0'));
    unit.ReceiveSms(u"139", u"你好"); // is listed meanwhile
    EXPECT_TRUE(clock.RunUntil([&] { return console.Command(1).Enabled(); }, 1min));
    std::vector<Text> logged = Logged();
    logged.erase(logged.begin(), logged.end() - 6);
    EXPECT_EQ(logged,
              (std::vector<Text>{u"初始化完毕", u"向第一报警发信", u"OK", u"发送任务已交送Tarnex",
                                 u"SendOK", u"发送完毕，复查结果"}));
    heard.resize(9);
    std::string order;
    for (const std::string& command : heard)
        order += command.substr(0, 4) + " ";
    EXPECT_EQ(order, "LCD1 LCD2 WRNO WRNO WRCS PCAl WRDT WRAT TXCO ");
    EXPECT_EQ(unit.Sent().back().text, u"脚脚(设备名)说:这是Tarnex OCXDebug发出的测试信息。");
    EXPECT_EQ(Setting(u"TarnexName"), u"脚脚(设备名)");
    clock.RunFor(3s);
    EXPECT_EQ(console.List2.Lines(),
              (std::vector<Text>{u"查询时间:" + console.List2.Lines().at(0).substr(5), u"号码:139",
                                 u"日期:24/05/06  时间:08:00:04", u"内容:你好", u""}));
}

TEST_F(ConsoleTest, SwitchesBothAlarmsOff) {
    Connect();
    Press(33);
    EXPECT_EQ(heard, (std::vector<std::string>{"TXPWROFF", "TXCONOFF"}));
}

TEST_F(ConsoleTest, ItsSerialNumberCountsUp) {
    const std::pair<TextView, TextView> serials[] = {{u"2405065x0000", u"2405065x0001"},
                                                     {u"2405065x9999", u"2405065x10000"},
                                                     {u"A12x4", u"A0013"},
                                                     {u"7", u"0008"},
                                                     {u"", u"0001"}};
    Connect();
    for (const auto& [before, after] : serials) {
        console.Text7.SetValue(Text(before));
        Press(45);
        EXPECT_EQ(console.Text7.Value(), after);
        EXPECT_EQ(unit.Memory.Serial, ToUtf8(after));
    }
}

TEST_F(ConsoleTest, ShowsWhatTheDeviceLinkDoes) {
    Connect();
    Press(43);
    EXPECT_EQ(Logged(), (std::vector<Text>{u"OCXDebug信息已打开"}));
    EXPECT_EQ(console.Command(43).Caption(), u"关闭OCXDebug");
    EXPECT_EQ(console.Width(), 15530);
    Press(18);
    EXPECT_TRUE(console.DebugList.Visible());
    EXPECT_EQ(console.DebugList.Lines().at(1), u"发送:~TX:RDAT\r\n");
    EXPECT_EQ(console.TrafficList.Lines().at(0), u"Send:~TX:RDAT\r\n");
    Press(43);
    EXPECT_EQ(Logged(), (std::vector<Text>{u"OCXDebug信息已关闭"}));
    EXPECT_EQ(console.Command(43).Caption(), u"打开OCXDebug");
    EXPECT_EQ(console.Width(), 9915);
    const std::size_t before = console.DebugList.Lines().size();
    Press(18);
    EXPECT_EQ(console.DebugList.Lines().size(), before);
}

TEST_F(ConsoleTest, UpgradesFromTheFixedFile) {
    Connect();
    Press(41);
    EXPECT_EQ(Logged(), (std::vector<Text>{u"升级失败!", u"打开文件：不能读取文件：没有这个文件。",
                                           u"设备程序没有改动。请更换文件。"}));
    EXPECT_TRUE(heard.empty());
    EXPECT_EQ(console.Command(1).Caption(), u"连接Tarnex"); // the update has closed the port
    EXPECT_EQ(Enabled(), kLinkAndLeave);

    files.Files["Tarnex_20050626.hex"] = files.Files["new.hex"];
    Press(1);
    Forget();
    console.Command(41).Click();
    ASSERT_TRUE(clock.RunUntil([&] { return console.Text6.Visible(); }, 10s));
    clock.RunFor(500ms);
    EXPECT_EQ(console.Text6.Value(), u"Erase");
    clock.RunFor(2s);
    EXPECT_EQ(Logged(),
              (std::vector<Text>{u"---------------------------", u"Tarnex K7100",
                                 u"设备名称    :机1", u"设备版本    :TARNEX-SIM 1.0",
                                 u"序列号      :SIM00000001", u"网络信号强度:0",
                                 u"---------------------------", u"正在升级Firmware,请等待.", u"",
                                 u"打开HEX文件", u"用升级模式打开Com3", u"开始握手",
                                 u"握手成功，开始擦除。", u"擦除成功，开始写入。", u"升级成功!",
                                 u"正在断开Tarnex.", u"已经断开Tarnex.", u"------------------"}));
    EXPECT_EQ(unit.Memory.Version, "NEWER 1.0");
    EXPECT_FALSE(console.Text6.Visible());
    EXPECT_EQ(Enabled(), kLinkAndLeave);

    Press(1); // the unit is starting up
    Press(41);
    EXPECT_EQ(Logged(), (std::vector<Text>{u"设备正在初始化,请稍候再试."}));
}

TEST_F(ConsoleTest, LeavingClosesThePortAndASecondCopyEndsAtOnce) {
    Connect();
    console.Command(6).Click();
    clock.RunFor(0s);
    EXPECT_TRUE(ended);
    EXPECT_FALSE(ports.OpenSettings(3));

    lock.HeldByAnother = true;
    ended.reset();
    OCXDebug second(world);
    second.Form_Load();
    clock.RunFor(0s);
    EXPECT_TRUE(ended);
    EXPECT_FALSE(second.Visible());
}

} // namespace
} // namespace tarnex
