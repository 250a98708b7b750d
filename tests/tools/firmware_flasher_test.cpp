#include "tests/tools/tool_fixture.h"
#include "tools/firmware_flasher.h"
#include "tools/update_progress.h"

namespace tarnex {
namespace {

class FlasherTest : public ToolTest {
  protected:
    FlasherTest() { flasher.Form_Load(); }
    void Connect() {
        flasher.Command1.Click();
        dialog.Choose("new.hex");
        flasher.Command1.Click();
        ASSERT_TRUE(clock.RunUntil([&] { return flasher.Command41.Enabled(); }, 5min));
        Logged();
    }
    // The lines since the last call, without their times.
    std::vector<Text> Logged() {
        std::vector<Text> lines;
        for (; seen < flasher.List1.Lines().size(); ++seen)
            lines.push_back(flasher.List1.Lines()[seen].substr(11));
        return lines;
    }
    // Command1, Command41, Command6.
    std::string Enabled() const {
        std::string enabled;
        for (const Button* button : {&flasher.Command1, &flasher.Command41, &flasher.Command6})
            enabled += button->Enabled() ? '1' : '0';
        return enabled;
    }

    FirmwareFlasher flasher{world, dialog, u"1.0.327"};
    std::size_t seen = 0;
};

TEST_F(FlasherTest, OpensWithItsAdviceAndTheVersion) {
    EXPECT_EQ(flasher.Caption(), u"(c)Firmware Flasher  v1.0.327");
    EXPECT_TRUE(flasher.Visible());
    EXPECT_FALSE(flasher.Text1.Visible());
    EXPECT_EQ(Enabled(), "101");
    EXPECT_EQ(flasher.List1.Lines(),
              (std::vector<Text>{
                  u"08:00:00:  Tarnex Firmware 升级程序", u"08:00:00:  ---------------------------",
                  u"08:00:00:  请确保Tarnex处于Ready状态",
                  u"08:00:00:  升级需要3分钟，升级开始后不可中断。", u"08:00:00:  "}));
}

TEST_F(FlasherTest, LeadsFromTheFileToTheNewVersion) {
    Logged();
    flasher.Command1.Click();
    EXPECT_EQ(dialog.Filter, u"*.hex|*.HEX");
    dialog.Choose("");
    EXPECT_EQ(flasher.Command1.Caption(), u"打　开");
    EXPECT_EQ(Enabled(), "101");
    flasher.Command1.Click();
    dialog.Choose("new.hex");
    EXPECT_EQ(flasher.Command1.Caption(), u"连　接");

    flasher.Command1.Click();
    EXPECT_EQ(Enabled(), "001");
    clock.RunFor(1s);
    EXPECT_EQ(flasher.Command1.Caption(), u"断　开");
    EXPECT_EQ(Enabled(), "111");
    EXPECT_EQ(Logged(), (std::vector<Text>{u"new.hex", u"正在连接Tarnex.",
                                           u"已在Com3成功连接Tarnex.", u"可以开始更新Firmware!"}));
    EXPECT_EQ(unit.Count("Hello,tarnex"), 2); // opened, closed, and opened again

    heard.clear();
    flasher.Command41.Click();
    files.Files["new.hex"].resize(20); // what was judged is written, not what is there by now
    EXPECT_EQ(Enabled(), "000");
    ASSERT_TRUE(clock.RunUntil([&] { return flasher.Text1.Visible(); }, 10s));
    EXPECT_EQ(Logged(), (std::vector<Text>{
                            u"---------------------------", u"Tarnex K7100", u"设备名称    :机1",
                            u"设备版本    :TARNEX-SIM 1.0", u"序列号      :SIM00000001",
                            u"---------------------------", u"正在升级Firmware,请等待.", u"",
                            u"打开HEX文件", u"用升级模式打开Com3", u"开始握手",
                            u"握手成功，开始擦除。", u"擦除成功，开始写入。"}));
    EXPECT_EQ(heard, (std::vector<std::string>{"Hello,tarnex", "ChkVer", "RDName", "ChkVer",
                                               "RDSerial", "RESET"}));
    EXPECT_TRUE(flasher.Figures.Visible());
    clock.RunFor(1s);
    EXPECT_EQ(flasher.Text1.Value(), u"0000");
    EXPECT_FALSE(flasher.Text1.Visible() || flasher.Figures.Visible());
    EXPECT_FALSE(flasher.GetAddrTimer.Enabled());
    EXPECT_EQ(Logged(), (std::vector<Text>{u"升级成功!", u"已经断开Tarnex.",
                                           u"---------------------------"}));
    EXPECT_EQ(flasher.Command1.Caption(), u"连　接");
    EXPECT_EQ(Enabled(), "101");
    EXPECT_EQ(unit.Memory.Version, "NEWER 1.0");
    flasher.Command1.Click(); // and once more
    clock.RunFor(1min);
    EXPECT_EQ(flasher.Command1.Caption(), u"断　开");
}

TEST_F(FlasherTest, TellsTheModelsApart) {
    const std::pair<const char*, std::vector<Text>> versions[] = {
        {"TARNEX  2.0",
         {u"---------------------------", u"Tarnex K7200", u"---------------------------",
          u"设备名称    :机1"}},
        {"TARNEX  3.0", {u"---------------------------", u"设备名称    :机1"}},
    };
    Connect();
    for (const auto& [version, lines] : versions) {
        unit.Memory.Version = version;
        flasher.Command41.Click();
        clock.RunFor(200ms);
        std::vector<Text> logged = Logged();
        logged.resize(lines.size());
        EXPECT_EQ(logged, lines);
        clock.RunFor(1min);
        flasher.Command1.Click();
        clock.RunFor(1s);
        Logged();
    }
}

TEST_F(FlasherTest, ShowsHowFarTheWritingIs) {
    files.Files["new.hex"].clear();
    for (unsigned record = 0; record < 1000; ++record)
        files.Files["new.hex"] += HexLine(record * 16, std::string(16, 'x'));
    files.Files["new.hex"] += ":00000001FF\n";
    Connect();
    flasher.Command41.Click();
    ASSERT_TRUE(clock.RunUntil([&] { return flasher.Text1.Value() >= u"2000"; }, 1min));
    EXPECT_EQ(flasher.Figures.Caption(), u"51 %  8256/16000字节  剩余3秒");
    FlashProgress early;
    early.bytes = 1000;
    EXPECT_EQ(FiguresInChinese(early, 27400, 3s), u"3 %  1000/27400字节  剩余1分20秒");
} // the window goes in the middle of the update

TEST_F(FlasherTest, AfterAFailureOneCanOnlyLeaveOrBringTheUnitBack) {
    Connect();
    unit.Loader().SetPlan(LoaderPlan{LoaderStep::kWrite, 1, LoaderFault::kRefuse});
    flasher.Command41.Click();
    clock.RunFor(1min);
    const std::vector<Text> logged = Logged();
    EXPECT_EQ((std::vector<Text>{logged.end() - 4, logged.end()}),
              (std::vector<Text>{u"升级失败!", u"写入地址0000：设备应答错误：5A A5 00 08。",
                                 u"设备程序可能不完整，恢复命令：tarnex-flasher --port COM3 "
                                 u"--file new.hex",
                                 u"也可以按“恢　复”再次写入。"}));
    EXPECT_EQ(Enabled(), "001");
    EXPECT_EQ(flasher.Text1.Value() + flasher.Figures.Caption(), u"0000");
    EXPECT_FALSE(ports.OpenSettings(3));
    flasher.Rescue.Click();
    EXPECT_EQ(Enabled(), "000");
    clock.RunFor(1min);
    EXPECT_EQ(unit.Memory.Version, "NEWER 1.0");
    EXPECT_EQ(Enabled(), "101");
    flasher.Command6.Click();
    clock.RunFor(0s);
    EXPECT_TRUE(ended);
}

TEST_F(FlasherTest, AUnitWithoutItsProgramIsCalledOnlyWhereItWasLast) {
    unit.Loader().SetPlan(LoaderPlan{LoaderStep::kErase, 1, LoaderFault::kSilent});
    Connect();
    flasher.Command41.Click();
    clock.RunFor(1min);
    flasher.Form_Unload();
    SimulatedUnit stranger(clock);
    ports.Plug(4, stranger);
    ports.ForgetWritten(3);

    FirmwareFlasher next(world, dialog, u"1");
    next.Form_Load();
    next.Command1.Click();
    dialog.Choose("new.hex");
    next.Rescue.Click();
    EXPECT_EQ(next.List1.Lines().back().substr(11),
              u"不知道设备在哪个串口，请用命令指定：tarnex-flasher --port COM1 --file new.hex");
    MyIniFile(store, gbk).WriteIniStr(u"TarnexComm", u"LastCom", u"3");
    next.Rescue.Click();
    EXPECT_EQ(next.List1.Lines().back().substr(11), u"正在呼叫设备：Com3 COM3");
    EXPECT_EQ(ports.Written(3), "");
    clock.RunFor(1min);
    EXPECT_EQ(unit.Memory.Version, "NEWER 1.0");
    EXPECT_EQ(ports.Written(4), "");
    next.Rescue.Click(); // it answers by now
    clock.RunFor(1min);
    EXPECT_EQ(next.Command1.Caption(), u"断　开");
    EXPECT_FALSE(next.Rescue.Enabled());
    ports.Unplug(4);
}

TEST_F(FlasherTest, ABadFileLeavesTheUnitAlone) {
    const std::vector<Text> trouble{u"打开文件：文件第2行含有非十六进制字符。",
                                    u"设备程序没有改动。请更换文件。"};
    Logged();
    flasher.Command1.Click();
    files.Files["it's.hex"] = files.Files["new.hex"];
    files.Files["it's.hex"].insert(files.Files["new.hex"].find('\n') + 1, ":0100000Z55AA\n");
    dialog.Choose("it's.hex");
    std::vector<Text> logged = Logged();
    EXPECT_EQ((std::vector<Text>{logged.begin() + 1, logged.end()}), trouble);
    flasher.Command1.Click();
    clock.RunFor(1s);
    Logged();
    heard.clear();
    flasher.Command41.Click();
    clock.RunFor(1min);
    logged = Logged();
    EXPECT_EQ(logged, (std::vector<Text>{u"升级失败!", trouble[0], trouble[1]}));
    EXPECT_TRUE(heard.empty());
    EXPECT_EQ(Enabled(), "001");
    flasher.OtherFile.Click();
    EXPECT_FALSE(flasher.OtherFile.Enabled());
    dialog.Choose("new.hex");
    EXPECT_EQ(Enabled(), "111");
    flasher.OtherFile.Click();
    EXPECT_EQ(Enabled(), "001");
    ports.Unplug(3);
    clock.RunFor(0s);
    EXPECT_EQ(Enabled(), "001"); // one question at a time
    dialog.Choose("");
    EXPECT_EQ(Enabled(), "101");
}

TEST_F(FlasherTest, WithoutAUnitOneMayTryAgain) {
    unit.Faults.Silent = true;
    flasher.Command1.Click();
    dialog.Choose("new.hex");
    flasher.Command1.Click();
    clock.RunFor(1min);
    EXPECT_EQ(Logged().back(), u"无法连接Tarnex.");
    EXPECT_EQ(Enabled(), "101");
    unit.Faults.Silent = false;
    flasher.Command1.Click();
    clock.RunFor(1s);
    EXPECT_EQ(flasher.Command1.Caption(), u"断　开");
}

TEST_F(FlasherTest, LeavingClosesThePortAndEndsTheProgram) {
    Connect();
    ASSERT_TRUE(ports.OpenSettings(3));
    flasher.Command6.Click();
    EXPECT_FALSE(ports.OpenSettings(3));
    EXPECT_FALSE(flasher.Visible());
    clock.RunFor(0s);
    EXPECT_TRUE(ended);
}

TEST_F(FlasherTest, ClosingEndsAWaitingCommandAtOnceButWarnsOfAHalfWrittenUnit) {
    Connect();
    flasher.Command41.Click();
    unit.Loader().SetPlan(LoaderPlan{LoaderStep::kErase, 1, LoaderFault::kLate});
    clock.RunFor(2s);
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

TEST_F(FlasherTest, WithoutADisplayItEndsOnceTheUnitIsWhole) {
    Connect();
    flasher.Command41.Click();
    ASSERT_TRUE(clock.RunUntil([&] { return flasher.Text1.Visible(); }, 10s));
    flasher.Abandon();
    EXPECT_FALSE(ended);
    ASSERT_TRUE(clock.RunUntil([&] { return ended.has_value(); }, 10s));
    EXPECT_EQ(unit.Memory.Version, "NEWER 1.0");
}

TEST_F(FlasherTest, WithoutADisplayAWaitingCommandEndsAtOnce) {
    flasher.Command1.Click();
    dialog.Choose("new.hex");
    flasher.Command1.Click();
    flasher.Abandon();
    clock.RunFor(0s);
    EXPECT_TRUE(ended);
}

TEST_F(FlasherTest, ClosingEndsASearchAtOnce) {
    unit.Faults.Silent = true;
    flasher.Command1.Click();
    dialog.Choose("new.hex");
    flasher.Command1.Click();
    clock.RunFor(2s);
    flasher.Close();
    clock.RunFor(0s);
    EXPECT_EQ(ended, clock.Now());
}

TEST_F(FlasherTest, APulledAdapterDisconnects) {
    Connect();
    ports.Unplug(3);
    clock.RunFor(0s);
    EXPECT_EQ(Logged().front(), u"已经断开Tarnex.");
    EXPECT_EQ(Enabled(), "101");

    ports.Plug(3, unit);
    flasher.Command1.Click();
    clock.RunFor(1s);
    unit.Faults.Silent = true;
    flasher.Command41.Click();
    clock.RunFor(1s);
    ports.Unplug(3);
    clock.RunFor(1s);
    const std::vector<Text> logged = Logged();
    EXPECT_EQ((std::vector<Text>{logged.end() - 3, logged.end()}),
              (std::vector<Text>{u"升级失败!", u"打开串口：没有这个串口。",
                                 u"设备程序没有改动，可以再次升级。"}));
    EXPECT_EQ(Enabled(), "001");
}

TEST_F(FlasherTest, ASecondCopyEndsBeforeItDoesAnything) {
    lock.HeldByAnother = true;
    FirmwareFlasher second(world, dialog, u"1");
    second.Form_Load();
    clock.RunFor(0s);
    EXPECT_TRUE(ended);
    EXPECT_FALSE(second.Visible());
    EXPECT_TRUE(second.List1.Lines().empty());
}

} // namespace
} // namespace tarnex
