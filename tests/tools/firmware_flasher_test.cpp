#include "tests/tools/tool_fixture.h"
#include "tools/firmware_flasher.h"
#include "tools/update_progress.h"

namespace tarnex {
namespace {

struct FlasherTest : ToolTest {
    FlasherTest() { flasher.Form_Load(); }
    void StartToConnect(const char* file = "new.hex") {
        flasher.Command1.Click();
        dialog.Choose(file);
        flasher.Command1.Click();
    }
    void Connect(const char* file = "new.hex") {
        StartToConnect(file);
        clock.RunFor(1s);
        ASSERT_EQ(Enabled(), "11110");
        Logged();
    }
    void Upgrade() {
        flasher.Command41.Click();
        clock.RunFor(1min);
    }
    // The lines since the last call, without their times.
    std::vector<Text> Logged() {
        std::vector<Text> lines;
        for (; seen < flasher.List1.Lines().size(); ++seen)
            lines.push_back(flasher.List1.Lines()[seen].substr(11));
        return lines;
    }
    std::string Enabled() const {
        std::string enabled;
        for (const Button* button : {&flasher.Command1, &flasher.Command41, &flasher.Command6,
                                     &flasher.OtherFile, &flasher.Rescue})
            enabled += button->Enabled() ? '1' : '0';
        return enabled;
    }

    FirmwareFlasher flasher{world, dialog, u"1.0.327"};
    std::size_t seen = 0;
};

TEST_F(FlasherTest, LeadsFromTheFileToTheNewVersion) {
    EXPECT_EQ(Enabled(), "10100");
    flasher.Command1.Click();
    EXPECT_EQ(Enabled(), "00100");
    dialog.Choose("");
    EXPECT_EQ(flasher.Command1.Caption(), u"打　开");
    StartToConnect();
    EXPECT_EQ(Enabled(), "00100");
    clock.RunFor(1s);
    EXPECT_EQ(flasher.Command1.Caption(), u"断　开");
    EXPECT_EQ(Enabled(), "11110");
    EXPECT_EQ(unit.Count("Hello,tarnex"), 2); // opened, closed, and opened again

    flasher.Command41.Click();
    files.Files["new.hex"].resize(20); // what was judged is written, not what is there by now
    EXPECT_EQ(Enabled(), "00000");
    ASSERT_TRUE(clock.RunUntil([&] { return flasher.Text1.Visible(); }, 10s));
    EXPECT_TRUE(flasher.Figures.Visible());
    EXPECT_EQ(heard.back(), "RESET");
    clock.RunFor(1s);
    EXPECT_EQ(flasher.Text1.Value(), u"0000");
    EXPECT_FALSE(flasher.Text1.Visible() || flasher.Figures.Visible());
    EXPECT_FALSE(flasher.GetAddrTimer.Enabled());
    EXPECT_EQ(flasher.Command1.Caption(), u"连　接");
    EXPECT_EQ(Enabled(), "10111");
    EXPECT_EQ(unit.Memory.Version, "NEWER 1.0");
    flasher.Command1.Click(); // and once more
    clock.RunFor(1min);
    EXPECT_EQ(Enabled(), "11110");
}

TEST_F(FlasherTest, ShowsTheUnitAndHowFarTheWritingIs) {
    EXPECT_EQ(ModelOf(u"TARNEX-SIM 1.0"), u"Tarnex K7100");
    EXPECT_EQ(ModelOf(u"TARNEX  3.0"), std::nullopt);
    FlashProgress early;
    early.bytes = 1000;
    EXPECT_EQ(FiguresInChinese(early, 27400, 3s), u"3 %  1000/27400字节  剩余1分20秒");

    Connect("long.hex");
    unit.Memory.Version = "TARNEX  2.0";
    flasher.Command41.Click();
    ASSERT_TRUE(clock.RunUntil([&] { return flasher.Text1.Value() >= u"4000"; }, 1min));
    EXPECT_EQ(flasher.Figures.Caption(), u"51 %  16576/32000字节  剩余5秒");
    std::vector<Text> logged = Logged();
    logged.resize(6);
    EXPECT_EQ(logged, (std::vector<Text>{Text(kLogRule), u"Tarnex K7200", Text(kLogRule),
                                         u"设备名称    :机1", u"设备版本    :TARNEX  2.0",
                                         u"序列号      :SIM00000001"}));
} // the window goes in the middle of the update

TEST_F(FlasherTest, AfterAFailureOneCanOnlyLeaveOrBringTheUnitBack) {
    Connect();
    unit.Loader().SetPlan(LoaderPlan{LoaderStep::kWrite, 1, LoaderFault::kRefuse});
    Upgrade();
    const std::vector<Text> logged = Logged();
    EXPECT_EQ((std::vector<Text>{logged.end() - 4, logged.end()}),
              (std::vector<Text>{u"升级失败!", u"写入地址0000：设备应答错误：5A A5 00 08。",
                                 u"设备程序可能不完整，恢复命令：tarnex-flasher --port COM3 "
                                 u"--file new.hex",
                                 u"也可以按“恢　复”再次写入。"}));
    EXPECT_EQ(Enabled(), "00111");
    EXPECT_EQ(flasher.Text1.Value() + flasher.Figures.Caption(), u"0000");
    EXPECT_FALSE(ports.OpenSettings(3));
    flasher.Rescue.Click();
    EXPECT_EQ(Enabled(), "00000");
    clock.RunFor(1min);
    EXPECT_EQ(unit.Memory.Version, "NEWER 1.0");
    EXPECT_EQ(Enabled(), "10111");
}

TEST_F(FlasherTest, ALostUnitIsCalledOnlyWhereItWasLast) {
    SimulatedUnit stranger(clock);
    ports.Plug(4, stranger);
    flasher.Command1.Click();
    dialog.Choose("new.hex");
    flasher.Rescue.Click();
    EXPECT_NE(Logged().back().find(u"tarnex-flasher --port COM1"), Text::npos);
    ini.WriteIniStr(u"TarnexComm", u"LastCom", u"3");
    EXPECT_EQ(ports.Written(3), "");
    flasher.Rescue.Click();
    EXPECT_EQ(Logged().back(), u"正在呼叫设备：Com3 COM3");
    clock.RunFor(1min);
    EXPECT_EQ(Enabled(), "11110"); // it answers all the same
    EXPECT_EQ(ports.Written(4), "");
    ports.Unplug(4);
}

TEST_F(FlasherTest, ABadFileLeavesTheUnitAlone) {
    const Text told = u"设备程序没有改动。请更换文件。";
    files.Files["bad.hex"] = "hello\n";
    Connect("bad.hex");
    heard.clear();
    Upgrade();
    EXPECT_EQ(Logged().back(), told);
    EXPECT_EQ(Enabled(), "00110");
    flasher.OtherFile.Click();
    EXPECT_EQ(Enabled(), "00100");
    dialog.Choose("new.hex");
    EXPECT_EQ(Enabled(), "11110");
    flasher.OtherFile.Click();
    ports.Unplug(3);
    clock.RunFor(0s);
    EXPECT_EQ(Enabled(), "00100"); // one question at a time
    dialog.Choose("none.hex");
    EXPECT_EQ(*++Logged().rbegin(), u"打开文件：不能读取文件：没有这个文件或文件夹。");
    flasher.OtherFile.Click();
    dialog.Choose("bad.hex");
    EXPECT_EQ(*++Logged().rbegin(), u"打开文件：文件第1行不以“:”开头。");
    EXPECT_EQ(Enabled(), "10111");
    ports.Plug(3, unit);
    flasher.Rescue.Click();
    EXPECT_EQ(Logged().back(), told);
    EXPECT_TRUE(heard.empty());
}

TEST_F(FlasherTest, WithoutAUnitOneMayTryAgain) {
    unit.Faults.Silent = true;
    StartToConnect();
    clock.RunFor(1min);
    EXPECT_EQ(Enabled(), "10111");
    unit.Faults.Silent = false;
    flasher.Command1.Click();
    clock.RunFor(1s);
    EXPECT_EQ(Enabled(), "11110");
    unit.Faults.Silent = true;
    clock.CallAfter(1s, [this] { ports.Unplug(3); });
    Upgrade();
    EXPECT_EQ(Logged().back(), u"设备程序没有改动，可以再次升级。");
    EXPECT_EQ(Enabled(), "00111");
}

TEST_F(FlasherTest, LeavingEndsAWaitingCommandAtOnceAndClosesThePort) {
    StartToConnect();
    unit.Faults.Silent = true;
    clock.RunFor(0s);
    flasher.Abandon();
    clock.RunFor(0s);
    EXPECT_EQ(ended, clock.Now());
    EXPECT_FALSE(ports.OpenSettings(3));
}

TEST_F(FlasherTest, ClosingWarnsOfAHalfWrittenUnit) {
    Connect("long.hex");
    EXPECT_EQ(flasher.BeforeSystemEnd(), "");
    flasher.Command41.Click();
    clock.RunFor(2s);
    EXPECT_NE(flasher.BeforeSystemEnd(), "");
    flasher.Close();
    clock.RunFor(0s);
    EXPECT_FALSE(ended);
    EXPECT_EQ(Logged().back(), u"正在写入，现在退出会使设备程序不完整。再次关闭窗口将强行退出。");
    flasher.Close();
    clock.RunFor(0s);
    EXPECT_EQ(ended, clock.Now());
    EXPECT_FALSE(ports.OpenSettings(3));
    EXPECT_EQ(files.OpenCount, 0);
}

} // namespace
} // namespace tarnex
