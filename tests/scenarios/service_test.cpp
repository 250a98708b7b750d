#include "device/flash_report.h"
#include "tests/scenarios/system_fixture.h"
#include "tests/ui/layout_checks.h"

namespace tarnex {
namespace {

class Service : public SystemTest {
  protected:
    std::vector<std::string> Events() const { return controller.Log; }
};

TEST_F(Service, OnlyAnEmptyCommandLineRuns) {
    for (const char* argument : {"/e", "/x", "/I", "/i /u", "--help"}) {
        ended_at.reset();
        controller.Log.clear();
        StartService(argument);
        clock.RunFor(0ms);
        EXPECT_TRUE(ended_at) << argument;
        EXPECT_TRUE(controller.Log.empty()) << argument;
    }
    StartService("/u");
    EXPECT_EQ(controller.Log, std::vector<std::string>{"uninstall"});
    controller.Log.clear();
    StartService("/i");
    EXPECT_EQ(controller.Log,
              (std::vector<std::string>{"install interactive", "parameter TimerInterval=300"}));
    controller.Log.clear();
    controller.InstallSucceeds = false;
    StartService("/i");
    EXPECT_EQ(controller.Log, std::vector<std::string>{"install interactive"});
}

TEST_F(Service, ASecondInstanceEndsSilently) {
    lock.HeldByAnother = true;
    StartService();
    clock.RunFor(1min);
    EXPECT_EQ(ended_at, 0ms);
    EXPECT_EQ(controller.Log, std::vector<std::string>{"start 2"});
    EXPECT_TRUE(said.empty());
    EXPECT_EQ(log.Opened, 0);
}

TEST_F(Service, StopsInOrder) {
    StartToReady();
    controller.Events.pause();
    controller.Events.resume();
    service->Window().mCmdSend.Click();
    const Duration stop = clock.Now();
    controller.Events.stop(false);
    clock.RunFor(0ms);
    EXPECT_EQ(ended_at, stop);
    EXPECT_TRUE(monitor.Received(u"tx-SMSEnd"));
    EXPECT_EQ(lock.Kills, 1);
    EXPECT_EQ(controller.Log,
              (std::vector<std::string>{"start 2", "ready", "event 1 109 Service paused",
                                        "event 4 110 Service continued"}));
    const long commands = unit.Count("RDCSQ");
    clock.RunFor(1min);
    EXPECT_EQ(unit.Count("RDCSQ"), commands);
    EXPECT_TRUE(unit.Sent().empty());
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
    store.SetContent(settings.Set("Text", "Text1(29)", "smtp.example").Content());
    StartToReady();
    MainWindow& window = service->Window();
    window.Command2.Click(); // what still goes on shows in the lists
    unit.Outcome = SmsOutcome::kLost;
    monitor.SendEvent({.service = 3, .state = 1, .by_sms = true, .by_mail = true});
    ASSERT_TRUE(
        clock.RunUntil([&] { return tcp.Connections.size() + unit.Sent().size() == 2; }, 8s));
    clock.RunFor(100ms);
    window.Command1.Click();
    monitor.Stop();
    const auto lines = [&window] {
        return window.List1.Lines().size() + window.List2.Lines().size() +
               window.mList1.Lines().size() + window.mList4.Lines().size() +
               window.mList5.Lines().size();
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
    service->Window().Command1.Click();
    EXPECT_TRUE(StartsWith(service->Window().mList1.Lines().back(), u"重新开始"));
    clock.RunFor(1min);
    EXPECT_EQ(unit.Count("Hello,tarnex"), 2); // none since the first search
}

TEST_F(Service, IsEndedByItsSettingsWithinAReload) {
    StartToReady();
    EditSetting(u"Service", u"Enable", u"disable"); // exact spelling only
    clock.RunFor(1min);
    EXPECT_FALSE(ended_at);
    EditSetting(u"Service", u"Enable", u"Disable");
    clock.RunFor(1min);
    EXPECT_EQ(ended_at, 100100ms); // the reload at 100 s, and once more to be sure
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
    EXPECT_FALSE(ended_at);
    EXPECT_TRUE(service->Unit().UnitReady);
    EXPECT_TRUE(said.empty());

    store.Readable = false; // the umask of an editor, say
    clock.RunFor(10min);
    ASSERT_EQ(said.size(), 1u);
    EXPECT_NE(said[0].find("Tarnex.ini cannot be read"), std::string::npos);
    store.Readable = true;
    clock.RunFor(10s);
    EXPECT_EQ(said.size(), 2u);
    EXPECT_FALSE(ended_at);
    EXPECT_TRUE(service->Unit().UnitReady);
    EXPECT_EQ(unit.Count("WRNO1"), 1);

    MainWindow& window = service->Window();
    store.Readable = false;
    service->ResetUnitState();
    window.Command2.Click(); // whatever the file says when it can be read again
    store.Readable = true;
    clock.RunFor(20s);
    window.Command4.Click();
    clock.RunFor(1min);
    EXPECT_FALSE(window.List2.Lines().empty());
}

TEST_F(Service, AResetInTheMiddleOfAChangeTakesWhatTheWholeFileSays) {
    store.SetContent(settings.Set("Check", "Check1(7)", "0").Content());
    StartService();
    clock.RunFor(1s);
    store.SetContent(""); // from here on it is rewritten
    service->ResetUnitState();
    settings.Set("Check", "Check1(7)", "1").Set("Debug", "DebugMode", "On");
    store.SetContent(settings.Content());
    clock.RunFor(1min);
    EXPECT_TRUE(service->Unit().UnitReady);
    EXPECT_TRUE(service->Window().Visible());
}

TEST_F(Service, ChangesThatNeedANewStartAreTold) {
    StartService();
    EditSetting(u"SerialPorts", u"COM4", u"/dev/ttyS9");
    EditSetting(u"Encoding", u"CodePage", u"UTF-8");
    clock.RunFor(1min);
    ASSERT_EQ(said.size(), 1u);
    EXPECT_NE(said[0].find("COM4, CodePage"), std::string::npos) << said[0];
    store.SetContent(settings.Content());
    clock.RunFor(20s);
    EXPECT_EQ(said.size(), 2u);
}

TEST_F(Service, DoesNotStartWithoutPermission) {
    for (const std::string& content : {std::string(), std::string("[Check]\r\nCheck1(13)=0\r\n"),
                                       std::string("\x00\xFF\x81[[[=\r", 8)}) {
        ended_at.reset();
        store.SetContent(content);
        StartService();
        clock.RunFor(100ms);
        EXPECT_TRUE(ended_at);
    }
    store.Delete();
    ended_at.reset();
    StartService();
    clock.RunFor(100ms);
    EXPECT_TRUE(ended_at);
    ASSERT_EQ(said.size(), 4u);
    EXPECT_NE(said[2].find("Check1(13)=1"), std::string::npos);
    EXPECT_NE(said[3].find("Tarnex.ini is missing"), std::string::npos);
}

TEST_F(Service, DebugModeFillsTheListsAndShowsTheWindow) {
    StartToReady();
    EXPECT_FALSE(service->Window().Visible());
    EXPECT_TRUE(service->Window().List2.Lines().empty());
    service->Window().Command2.Click();
    EXPECT_EQ(service->Window().Command2.Caption(), u"DebugOff");
    for (const int width : {9255, 3975}) {
        service->Window().Command3.Click();
        EXPECT_EQ(service->Window().mList1.Width(), width);
    }
    for (const int width : {8415, 5175}) {
        service->Window().Command5.Click();
        EXPECT_EQ(service->Window().List1.Width(), width);
    }
    clock.RunFor(10s);
    EXPECT_FALSE(service->Window().List2.Lines().empty());
    EXPECT_FALSE(service->Window().List1.Lines().empty());
    service->Window().Command4.Click();
    EXPECT_TRUE(service->Window().List2.Lines().empty());
    service->Window().mCmdLinkCheck.Click();
    EXPECT_EQ(service->Window().mList3.Lines().back(), u"True");

    EditSetting(u"Debug", u"DebugMode", u"On");
    unit.Boot(); // the next reset reads the mode
    clock.RunFor(1min);
    EXPECT_TRUE(service->Window().Visible());
}

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

TEST_F(Service, ListLinesAreEchoedOnlyWhileNoScreenShowsThem) {
    SimulatedView screen;
    view = &screen;
    settings.Set("Debug", "DebugMode", "On");
    store.SetContent(settings.Content());
    StartToReady();
    EXPECT_FALSE(service->Window().List2.Lines().empty());
    EXPECT_TRUE(echoed.empty());
    clock.RunFor(500ms);
    EXPECT_EQ(service->Window().mTxtStatus.Value(), u"True");

    screen.screen = false; // the operator logged out
    const std::size_t lines = service->Window().List2.Lines().size();
    clock.RunFor(20s);
    EXPECT_FALSE(echoed.empty());
    EXPECT_GT(service->Window().List2.Lines().size(), lines);
    clock.RunFor(3h);
    EXPECT_LE(service->Window().List2.Lines().size(), ListBox::kLinesUnseen);
    service.reset();
}

TEST_F(Service, TheOtherWindowsAreReachedFromTheMainWindowAndGoWithIt) {
    SimulatedView screen;
    view = &screen;
    settings.Set("Debug", "DebugMode", "On");
    store.SetContent(settings.Content());
    StartToReady();
    const Form& mail = *screen.forms["MailSender"];
    const Form& core = *screen.forms["TarnexCore"];
    EXPECT_FALSE(mail.Visible() || core.Visible());
    service->Window().mCmdMail.Click();
    service->Window().mCmdCore.Click();
    EXPECT_TRUE(mail.Visible() && core.Visible());

    EditSetting(u"Debug", u"DebugMode", u"Off");
    service->ResetUnitState();
    EXPECT_FALSE(service->Unit().UnitReady || service->Unit().UnitOnline);
    EXPECT_FALSE(service->Window().Visible());
    EXPECT_FALSE(mail.Visible() || core.Visible());
    service->Window().mTxtStatus.SetValue(u"");
    clock.RunFor(5s);
    EXPECT_EQ(service->Window().mTxtStatus.Value(), u""); // nobody would see it
    service.reset();
}

TEST_F(Service, TheDeviceLinkIsTriedOutWhileTheServiceRuns) {
    SimulatedView screen;
    view = &screen;
    StartServiceAndMonitor();
    Form& core = *screen.forms["TarnexCore"];
    const auto& results = dynamic_cast<ListBox*>(core.Find("Results"))->Lines();
    const auto button = [&](const char* name) { return dynamic_cast<Button*>(core.Find(name)); };
    ASSERT_TRUE(clock.RunUntil([&] { return service->Unit().UnitBusy(); }, 1min));
    button("CMDRDNO")->Click();
    ASSERT_FALSE(results.empty());
    EXPECT_EQ(results.back(), u"RDNO: 服务正在使用设备，请稍候再按。");
    ASSERT_TRUE(clock.RunUntil([&] { return service->Unit().UnitReady; }, 1min));

    CheckLayoutOf(core);
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
        button(name)->Click();
        clock.RunFor(100ms);
        EXPECT_EQ(results.back(), result);
    }
    Button& csq = *button("CMDCSQ");
    for (const auto& [caption, asked] : {std::pair{u"CSQ Stop", 10}, std::pair{u"CSQ Start", 0}}) {
        csq.Click();
        EXPECT_EQ(csq.Caption(), caption);
        const long before = unit.Count("RDCSQ");
        clock.RunFor(10s);
        EXPECT_EQ((unit.Count("RDCSQ") - before) / 10 * 10, asked);
    }
    files.Files["Tarnex_20050626.hex"] = ":0100000055AA\n:00000001FF\n";
    ASSERT_TRUE(clock.RunUntil([&] { return !service->Unit().UnitBusy(); }, 1min));
    button("CMDFirmware")->Click();
    EXPECT_TRUE(clock.RunUntil([&] { return results.back() == u"Firmware: 升级成功!"; }, 1min));
    EXPECT_TRUE(clock.RunUntil([&] { return service->Unit().UnitReady; }, 1min));
    ASSERT_TRUE(clock.RunUntil([&] { return !service->Unit().UnitBusy(); }, 1min));
    unit.Loader().SetPlan(LoaderPlan{LoaderStep::kWrite, 1, LoaderFault::kRefuse});
    button("CMDFirmware")->Click();
    clock.RunFor(1min);
    EXPECT_EQ((std::vector<Text>{results.end() - 3, results.end()}),
              (std::vector<Text>{u"写入地址0000：设备应答错误：5A A5 00 08。",
                                 u"设备程序可能不完整，恢复命令：tarnex-flasher --port COM3 "
                                 u"--file Tarnex_20050626.hex",
                                 u"Firmware: 升级失败! 请停止服务，再运行以上恢复命令。"}));
    button("CMDInit")->Click();
    EXPECT_EQ(results.back(), u"Init: OK");
    button("CMDFirmware")->Click();
    EXPECT_EQ(results.back(), u"Firmware: 设备没有连接。");
    button("CMDReset")->Click();
    service.reset(); // while the command waits
}

TEST_F(Service, LeavingAHalfWrittenUnitTakesASecondPress) {
    SimulatedView screen;
    view = &screen;
    StartToReady();
    Form& core = *screen.forms["TarnexCore"];
    files.Files["Tarnex_20050626.hex"] = ":0100000055AA\n:00000001FF\n";
    const auto& results = dynamic_cast<ListBox*>(core.Find("Results"))->Lines();
    for (int update = 0; update < 2; ++update) {
        ASSERT_TRUE(clock.RunUntil(
            [&] { return service->Unit().UnitReady && !service->Unit().UnitBusy(); }, 2min));
        dynamic_cast<Button*>(core.Find("CMDFirmware"))->Click();
        ASSERT_TRUE(
            clock.RunUntil([&] { return results.back() == u"握手成功，开始擦除。"; }, 1min));
        service->Window().Close();
        clock.RunFor(0s);
        ASSERT_FALSE(ended_at);
        EXPECT_EQ(service->Window().mList1.Lines().back(), kCloseWarning);
    }
    service->Window().mCMDExit.Click();
    clock.RunFor(0s);
    EXPECT_TRUE(ended_at);
    service.reset();
}

TEST_F(Service, TheTestMessageGoesToTheFirstNumber) {
    StartToReady();
    service->Window().mCmdSend.Click();
    clock.RunFor(20s);
    ASSERT_EQ(unit.Sent().size(), 1u);
    EXPECT_EQ(unit.Sent()[0].number_index, 1);
}

} // namespace
} // namespace tarnex
