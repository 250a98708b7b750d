#include "device/flash_report.h"
#include "tests/scenarios/system_fixture.h"

namespace tarnex {
namespace {

using Said = std::vector<std::string>;

struct SimulatedWindow : FormWindow {
    SimulatedWindow(const Form& shown, const bool& has_screen) : form(shown), screen(has_screen) {}
    bool Shown() const override { return screen && form.Visible(); }
    const Form& form;
    const bool& screen;
};

struct SimulatedView : View {
    std::unique_ptr<FormWindow> Attach(Form& form) override {
        forms[form.Name()] = &form;
        return std::make_unique<SimulatedWindow>(form, screen);
    }
    bool screen = true;
    std::map<std::string, Form*> forms;
};

struct Service : SystemTest {
    ~Service() override { service.reset(); } // before its windows
    // With windows, in debug mode.
    void StartWithWindows() {
        view = &screen;
        Set(u"Debug", u"DebugMode", u"On");
        StartToReady();
    }
    // The window of the device link.
    Form& Core() { return *screen.forms["TarnexCore"]; }
    void Press(const char* name) { dynamic_cast<Button*>(Core().Find(name))->Click(); }
    const auto& Results() { return dynamic_cast<ListBox*>(Core().Find("Results"))->Lines(); }
    bool RunUntilResult(TextView line) {
        return clock.RunUntil([&] { return Results().back() == line; }, 1min);
    }
    bool RunUntilFree() {
        return clock.RunUntil([&] { return State().UnitReady && !State().UnitBusy(); }, 2min);
    }

    SimulatedView screen;
};

TEST_F(Service, OnlyAnEmptyCommandLineRuns) {
    const auto asks = [this](const char* command_line) {
        ended_at.reset();
        controller.Log.clear();
        StartService(command_line);
        clock.RunFor(0ms);
        return controller.Log;
    };
    for (const char* argument : {"/e", "/x", "/I", "/i /u", "--help"}) {
        EXPECT_EQ(asks(argument), Said{});
        EXPECT_TRUE(ended_at) << argument;
    }
    EXPECT_EQ(asks("/u"), Said{"uninstall"});
    EXPECT_EQ(asks("/i"), (Said{"install interactive", "parameter TimerInterval=300"}));
    controller.InstallSucceeds = false;
    EXPECT_EQ(asks("/i"), Said{"install interactive"});
}

TEST_F(Service, StopsInOrder) {
    StartToReady();
    controller.Events.pause();
    controller.Events.resume();
    Window().mCmdSend.Click(); // the test message, to the first number
    clock.RunFor(20s);
    Window().mCmdSend.Click();
    const Duration stop = clock.Now();
    controller.Events.stop(false);
    clock.RunFor(0ms);
    EXPECT_EQ(ended_at, stop);
    EXPECT_TRUE(monitor.Received(u"tx-SMSEnd"));
    EXPECT_EQ(lock.Kills, 1);
    EXPECT_EQ(controller.Log, (Said{"start 2", "ready", "event 1 109 Service paused",
                                    "event 4 110 Service continued"}));
    const long commands = unit.Count("RDCSQ");
    clock.RunFor(1min);
    EXPECT_EQ(unit.Count("RDCSQ"), commands);
    ASSERT_EQ(unit.Sent().size(), 1u);
    EXPECT_EQ(unit.Sent()[0].number_index, 1);
}

TEST_F(Service, StopsAtOnceWhileACommandWaitsAndSilentlyWithTheMachine) {
    StartServiceAndMonitor();
    clock.RunTo(20s);
    unit.Faults.Silent = true;
    clock.RunTo(22s); // the greeting waits for an answer
    controller.Events.stop(true);
    clock.RunFor(0ms);
    EXPECT_EQ(ended_at, 22s);
    EXPECT_FALSE(monitor.Received(u"tx-SMSEnd"));
}

TEST_F(Service, TheStopButtonLeavesOnlyTheReloadRunning) {
    Set(u"Text", u"Text1(29)", u"smtp.example");
    StartToReady();
    MainWindow& window = Window();
    window.Command2.Click(); // what still goes on shows in the lists
    unit.Outcome = SmsOutcome::kLost;
    monitor.SendEvent({.service = 3, .state = 1, .by_sms = true, .by_mail = true});
    ASSERT_TRUE(
        clock.RunUntil([&] { return tcp.Connections.size() + unit.Sent().size() == 2; }, 8s));
    clock.RunFor(100ms);
    window.Command1.Click();
    monitor.Stop();
    const auto lines = [&window] {
        std::size_t count = 0;
        for (const ListBox* list :
             {&window.List1, &window.List2, &window.mList1, &window.mList4, &window.mList5})
            count += list->Lines().size();
        return count;
    };
    const std::size_t before = lines();
    const int opened = log.Opened;
    clock.RunFor(1min);
    EXPECT_EQ(log.Opened, opened + 6); // the log is opened anew with every reload
    EXPECT_EQ(lines(), before);
    EXPECT_EQ(tcp.Connections.size(), 1u);

    service.reset();
    StartService();
    clock.RunFor(10s);
    Window().Command1.Click();
    EXPECT_TRUE(StartsWith(Window().mList1.Lines().back(), u"重新开始"));
    clock.RunFor(1min);
    EXPECT_EQ(unit.Count("Hello,tarnex"), 2); // none since the first search
}

TEST_F(Service, IsEndedByItsSettingsWithinAReload) {
    StartToReady();
    Set(u"Service", u"Enable", u"Disable");
    clock.RunFor(1min);
    EXPECT_EQ(ended_at, 40100ms); // the reload at 40 s, and once more to be sure
    EXPECT_FALSE(monitor.Received(u"tx-SMSEnd"));
    EXPECT_EQ(said.size(), 1u);
}

TEST_F(Service, AFileInDoubtChangesNothing) {
    StartToReady();
    const std::string whole = store.Read().content;
    clock.RunTo(1min - 1ms);
    store.SetContent(whole.substr(0, 20)); // what the reload at 60 s finds
    clock.RunFor(2ms);
    store.SetContent(whole);
    clock.RunFor(10min);
    EXPECT_TRUE(said.empty());

    store.Readable = false; // the umask of an editor, say
    clock.RunFor(10min);
    ASSERT_EQ(said.size(), 1u);
    EXPECT_NE(said[0].find("Tarnex.ini cannot be read"), std::string::npos);
    store.Readable = true;
    clock.RunFor(10s);
    EXPECT_EQ(said.size(), 2u);
    EXPECT_FALSE(ended_at);
    EXPECT_TRUE(State().UnitReady);
    EXPECT_EQ(unit.Count("WRNO1"), 1);

    store.Readable = false;
    service->ResetUnitState();
    Window().Command2.Click(); // whatever the file says when it can be read again
    store.Readable = true;
    clock.RunFor(20s);
    Window().Command4.Click();
    clock.RunFor(1min);
    EXPECT_FALSE(Window().List2.Lines().empty());
}

TEST_F(Service, AResetInTheMiddleOfAChangeTakesWhatTheWholeFileSays) {
    Set(u"Check", u"Check1(7)", u"0");
    StartService();
    clock.RunFor(1s);
    store.SetContent(""); // from here on it is rewritten
    service->ResetUnitState();
    store.SetContent(kTestSettings + std::string("[Debug]\nDebugMode=On\n"));
    clock.RunFor(1min);
    EXPECT_TRUE(State().UnitReady);
    EXPECT_TRUE(Window().Visible());
}

TEST_F(Service, ChangesThatNeedANewStartAreTold) {
    StartService();
    Set(u"SerialPorts", u"COM4", u"/dev/ttyS9");
    Set(u"Encoding", u"CodePage", u"UTF-8");
    clock.RunFor(1min);
    ASSERT_EQ(said.size(), 1u);
    EXPECT_NE(said[0].find(R"("com4-device", "code-page")"), std::string::npos) << said[0];
    store.SetContent(kTestSettings);
    clock.RunFor(20s);
    EXPECT_EQ(said.size(), 2u);
}

TEST_F(Service, DoesNotStartWithoutPermission) {
    for (const std::string content : {"[Check]\nCheck1(13)=0\n", "\xFF\x81[[[=\r", ""}) {
        store.SetContent(content);
        if (content.empty())
            store.Delete();
        ended_at.reset();
        StartService();
        clock.RunFor(100ms);
        EXPECT_TRUE(ended_at);
    }
    ASSERT_EQ(said.size(), 3u);
    EXPECT_NE(said[1].find("set run-allowed on"), std::string::npos);
    EXPECT_NE(said[2].find("Tarnex.ini is missing"), std::string::npos);
}

TEST_F(Service, DebugModeFillsTheListsAndShowsTheWindow) {
    StartToReady();
    EXPECT_FALSE(Window().Visible());
    EXPECT_TRUE(Window().List2.Lines().empty());
    Window().Command2.Click();
    EXPECT_EQ(Window().Command2.Caption(), u"DebugOff");
    for (const auto& [left, right] : {std::pair{9255, 8415}, {3975, 5175}}) {
        Window().Command3.Click();
        Window().Command5.Click();
        EXPECT_EQ(Window().mList1.Width(), left);
        EXPECT_EQ(Window().List1.Width(), right);
    }
    clock.RunFor(10s);
    EXPECT_FALSE(Window().List2.Lines().empty());
    EXPECT_FALSE(Window().List1.Lines().empty());
    Window().Command4.Click();
    EXPECT_TRUE(Window().List2.Lines().empty());
    Window().mCmdLinkCheck.Click();
    EXPECT_EQ(Window().mList3.Lines().back(), u"True");

    Set(u"Debug", u"DebugMode", u"On");
    unit.Boot(); // the next reset reads the mode
    clock.RunFor(1min);
    EXPECT_TRUE(Window().Visible());
}

TEST_F(Service, ListLinesAreEchoedOnlyWhileNoScreenShowsThem) {
    StartWithWindows();
    EXPECT_TRUE(echoed.empty());
    clock.RunFor(500ms);
    EXPECT_EQ(Window().mTxtStatus.Value(), u"True");

    screen.screen = false; // the operator logged out
    const std::size_t lines = Window().List2.Lines().size();
    clock.RunFor(20s);
    EXPECT_FALSE(echoed.empty());
    EXPECT_GT(Window().List2.Lines().size(), lines);
    clock.RunFor(3h);
    EXPECT_LE(Window().List2.Lines().size(), ListBox::kLinesUnseen);
}

TEST_F(Service, TheOtherWindowsAreReachedFromTheMainWindowAndGoWithIt) {
    StartWithWindows();
    const Form& mail = *screen.forms["MailSender"];
    const Form& core = Core();
    EXPECT_FALSE(mail.Visible() || core.Visible());
    Window().mCmdMail.Click();
    Window().mCmdCore.Click();
    EXPECT_TRUE(mail.Visible() && core.Visible());

    Set(u"Debug", u"DebugMode", u"Off");
    service->ResetUnitState();
    EXPECT_FALSE(State().UnitReady || State().UnitOnline);
    EXPECT_FALSE(Window().Visible());
    EXPECT_FALSE(mail.Visible() || core.Visible());
    Window().mTxtStatus.SetValue(u"");
    clock.RunFor(5s);
    EXPECT_EQ(Window().mTxtStatus.Value(), u""); // nobody would see it
}

TEST_F(Service, TheDeviceLinkIsTriedOutWhileTheServiceRuns) {
    view = &screen;
    StartServiceAndMonitor();
    ASSERT_TRUE(clock.RunUntil([&] { return State().UnitBusy(); }, 1min));
    Press("CMDRDNO");
    ASSERT_FALSE(Results().empty());
    EXPECT_EQ(Results().back(), u"RDNO: 服务正在使用设备，请稍候再按。");
    ASSERT_TRUE(RunUntilReady(1min));

    clock.RunFor(3s);
    files.Files["Tarnex_20050626.hex"] = ":00000001FE\n";
    for (const auto& [name, result] : {
             std::pair{"CMDRDNO", u"RDNO: 13900000001"},
             std::pair{"CMDRDCSCA", u"RDCSCA: +8613800100500"},
             std::pair{"CMDGetComFifo", u"GetComFifo: NoData"},
             std::pair{"CMDSMSSendChk", u"SMSSendChk: Free"},
             std::pair{"CMDDebugOn", u"DebugOn: On"},
             std::pair{"CMDDebugOff", u"DebugOff: Off"},
             std::pair{"CMDFirmware", u"Firmware: 升级失败!"},
             std::pair{"CMDSendSMS1", u"SendSMS1: OK"},
             std::pair{"CMDSendSMS2", u"SendSMS2: Busy"},
         }) {
        Press(name);
        clock.RunFor(100ms);
        EXPECT_EQ(Results().back(), result);
    }
    for (const auto& [caption, asked] : {std::pair{u"CSQ Stop", 10}, {u"CSQ Start", 0}}) {
        Press("CMDCSQ");
        EXPECT_EQ(dynamic_cast<Button*>(Core().Find("CMDCSQ"))->Caption(), caption);
        const long before = unit.Count("RDCSQ");
        clock.RunFor(10s);
        EXPECT_EQ((unit.Count("RDCSQ") - before) / 10 * 10, asked);
    }
    files.Files["Tarnex_20050626.hex"] = ":0100000055AA\n:00000001FF\n";
    ASSERT_TRUE(RunUntilFree());
    Press("CMDFirmware");
    EXPECT_TRUE(RunUntilResult(u"Firmware: 升级成功!"));
    ASSERT_TRUE(RunUntilFree());
    unit.Loader().SetPlan(LoaderPlan{LoaderStep::kWrite, 1, LoaderFault::kRefuse});
    Press("CMDFirmware");
    clock.RunFor(1min);
    EXPECT_EQ((std::vector<Text>{Results().end() - 3, Results().end()}),
              (std::vector<Text>{u"写入地址0000：设备应答错误：5A A5 00 08。",
                                 u"设备程序可能不完整，恢复命令：tarnex-flasher --port COM3 "
                                 u"--file Tarnex_20050626.hex",
                                 u"Firmware: 升级失败! 请停止服务，再运行以上恢复命令。"}));
    Press("CMDInit");
    EXPECT_EQ(Results().back(), u"Init: OK");
    Press("CMDFirmware");
    EXPECT_EQ(Results().back(), u"Firmware: 设备没有连接。");
    Press("CMDReset"); // the service ends while the command waits
}

TEST_F(Service, LeavingAHalfWrittenUnitTakesASecondPress) {
    view = &screen;
    StartToReady();
    files.Files["Tarnex_20050626.hex"] = ":0100000055AA\n:00000001FF\n";
    for (int update = 0; update < 2; ++update) {
        ASSERT_TRUE(RunUntilFree());
        Press("CMDFirmware");
        ASSERT_TRUE(RunUntilResult(u"握手成功，开始擦除。"));
        Window().Close();
        clock.RunFor(0s);
        ASSERT_FALSE(ended_at);
        EXPECT_EQ(Window().mList1.Lines().back(), kCloseWarning);
        EXPECT_NE(controller.Events.before_system_end(), "");
    }
    Window().mCMDExit.Click();
    clock.RunFor(0s);
    EXPECT_TRUE(ended_at);
}

} // namespace
} // namespace tarnex
