#include "service/tarnex_comm.h"

#include "device/flash_report.h"
#include "service/settings_notices.h"
#include "settings/setting_table.h"

namespace tarnex {

namespace {

constexpr Duration kReloadPeriod = 10s;
constexpr Duration kStatusPeriod = 500ms;
constexpr Duration kSecondLook = 100ms;
constexpr Duration kFirstSearch = 15s;
constexpr int kAcceptPauseAndContinue = 2;
constexpr int kPausedEvent = 109;
constexpr int kContinuedEvent = 110;

struct WidthPair {
    int wide;   // twips
    int narrow; // twips
};
constexpr WidthPair kEventListWidths{9255, 3975};
constexpr WidthPair kDebugListWidths{8415, 5175};

void ToggleWidth(ListBox& list, WidthPair widths) {
    list.SetWidth(list.Width() == widths.wide ? widths.narrow : widths.wide);
}

} // namespace

TarnexComm::TarnexComm(World world)
    : world_(std::move(world)), window_(world_.echo, [this] { return WindowShown(); }),
      notices_(world_.notice), lists_(&window_), ini_(world_.settings_store, world_.code_page),
      log_(world_.clock, world_.log_table, notices_),
      core_({.clock = world_.clock,
             .ports = world_.serial_ports,
             .code_page = world_.code_page,
             .ini = ini_,
             .lists = lists_,
             .notices = notices_,
             .hardware_lost = [this] { connection_.SetToResearch(); }}),
      mail_(world_.clock, world_.tcp, ini_, world_.code_page, notices_),
      mail_window_(mail_, world_.clock), //
      queue_({.clock = world_.clock,
              .unit = unit_,
              .sender = core_.sms,
              .lists = lists_,
              .may_send = [this] { return window_.mChkSMSSendEnable.Checked(); },
              .reset_unit_state = [this] { ResetUnitState(); }}),
      codec_(world_.clock, ini_), //
      dispatcher_({.clock = world_.clock,
                   .settings = settings_,
                   .queue = queue_,
                   .mail = mail_,
                   .log = log_,
                   .lists = lists_}),
      link_({.clock = world_.clock,
             .sockets = world_.sockets,
             .code_page = world_.code_page,
             .settings = settings_,
             .unit = unit_,
             .dispatcher = dispatcher_,
             .lists = lists_,
             .notices = notices_}),
      cycle_({.clock = world_.clock,
              .core = core_,
              .ini = ini_,
              .settings = settings_,
              .unit = unit_,
              .lists = lists_,
              .log = log_,
              .link = link_,
              .codec = codec_,
              .queue = queue_,
              .take_number_switches = [this] { TakeNumberSwitches(); },
              .set_to_research = [this] { connection_.SetToResearch(); }}),
      connection_({.clock = world_.clock,
                   .core = core_,
                   .ini = ini_,
                   .settings = settings_,
                   .unit = unit_,
                   .lists = lists_,
                   .link = link_,
                   .mCheckTimer = cycle_.mCheckTimer,
                   .reset_unit_state = [this] { ResetUnitState(); }}),
      core_window_({.core = core_,
                    .files = world_.files,
                    .unit = unit_,
                    .set_to_research =
                        [this] {
                            leave_warned_ = false;
                            connection_.SetToResearch();
                        }}),
      status_({.clock = world_.clock,
               .sink = world_.status,
               .process_id = world_.process_id,
               .ports = world_.serial_ports,
               .settings_store = world_.settings_store,
               .settings = settings_,
               .unit = unit_,
               .discovery = core_.discovery,
               .link = link_,
               .queue = queue_,
               .mail = mail_,
               .dispatcher = dispatcher_,
               .log = log_,
               .lists = lists_,
               .notices = notices_}),
      AutoReloadSettingsTimer_(world_.clock, "AutoReloadSettingsTimer", kReloadPeriod,
                               [this] { LoadSettings(); }),
      Timer1_(world_.clock, "Timer1", kStatusPeriod,
              [this] { window_.mTxtStatus.SetValue(unit_.UnitReady ? u"True" : u"False"); }) {
    for (Timer* timer :
         {&link_.HandShake, &link_.ConnectServiceLost, &cycle_.mCheckTimer, &queue_.mSMSSendTimer,
          &queue_.mSMSSendChkTimer, &connection_.mAutoConnect})
        stoppable_.Add(*timer);
    for (const TimerList* form : {&mail_.Timers(), &core_.timers})
        for (Timer* timer : form->All())
            stoppable_.Add(*timer);
    WireButtons();
    if (world_.view) {
        on_screen_ = world_.view->Attach(window_);
        mail_on_screen_ = world_.view->Attach(mail_window_);
        core_on_screen_ = world_.view->Attach(core_window_);
    }
}

TarnexComm::~TarnexComm() {
    world_.clock.Cancel(second_look_);
    world_.clock.Cancel(end_);
}

void TarnexComm::Form_Load(const std::string& command_line) {
    if (command_line == "/i")
        Install();
    else if (command_line == "/u")
        world_.controller.Uninstall();
    if (!command_line.empty()) {
        EndProcess();
        return;
    }
    world_.controller.StartService(kAcceptPauseAndContinue, ControllerEvents());
    if (!world_.instance_lock.Acquire() || !TakeStartSettings()) {
        EndProcess();
        return;
    }
    AutoReloadSettingsTimer_.Enable();
    link_.Open();
    ResetUnitState();
    status_.Start();
    world_.controller.ReportReady();
}

void TarnexComm::Install() {
    if (!world_.controller.Install(true))
        return;
    world_.controller.SaveParameter("TimerInterval", "300");
    if (TakeStartSettings())
        ResetUnitState();
}

bool TarnexComm::TakeStartSettings() {
    const std::optional<StartSettings> taken = world_.take_start_settings();
    start_settings_ = taken.value_or(StartSettings());
    return taken.has_value();
}

ServiceEvents TarnexComm::ControllerEvents() {
    return {.start = [] {}, // Form_Load has begun the work
            .stop =
                [this](bool system_ending) {
                    if (system_ending)
                        WriteExWindowsState(true);
                    Form_Unload();
                },
            .pause =
                [this] {
                    world_.controller.LogEvent(EventType::kError, kPausedEvent, "Service paused");
                },
            .resume =
                [this] {
                    world_.controller.LogEvent(EventType::kInformation, kContinuedEvent,
                                               "Service continued");
                }};
}

void TarnexComm::ResetUnitState() {
    unit_.BeginAnew();
    LoadSettings();
    reset_in_doubt_ = doubt_;
    link_.Reset();
    queue_.Reset();
    cycle_.Reset();
    connection_.mAutoConnect.Reset(kFirstSearch);
    TakeSearchAndDebug();
}

void TarnexComm::TakeSearchAndDebug() {
    const bool debug = ini_.IsOn("debug-mode"_setting);
    core_.OCXDebug(debug ? u"On" : u"Off");
    lists_.DebugOn = debug;
    ShowWindow(debug);
    if (settings_.AutoSearchOff)
        connection_.mAutoConnect.Disable();
    else if (!unit_.UnitConnected && !unit_.UnitBusy())
        connection_.mAutoConnect.Enable();
}

void TarnexComm::LoadSettings() {
    ReadAndApply();
    if (doubt_ && !second_look_pending_) {
        // Other programs rewrite the file in place: it may stand half-written just now.
        second_look_pending_ = true;
        second_look_ = world_.clock.CallAfter(kSecondLook, [this] { LookAgain(); });
    }
}

LoadedSettings TarnexComm::ReadAndApply() {
    const LoadedSettings loaded = ReadSettings(*ini_.Snapshot(), settings_);
    doubt_ = ini_.ReadProblem() || !loaded.enabled || !loaded.allowed;
    if (doubt_)
        return loaded;
    Apply(loaded.settings);
    TellOfRestart(loaded.start);
    const std::string name = world_.settings_store.Name();
    notices_.Report("settings reading", "", "The settings file " + name + " can be read again.");
    notices_.Report("settings", WhyNotWritten(world_.settings_store, ini_),
                    "The settings file " + name + " is written again.");
    if (std::exchange(reset_in_doubt_, false))
        TakeSearchAndDebug();
    return loaded;
}

void TarnexComm::TakeNumberSwitches() {
    settings_.SwitchCheck42 = ini_.IsOn("sms-to-number-1"_setting);
    settings_.SwitchCheck43 = ini_.IsOn("sms-to-number-2"_setting);
}

void TarnexComm::LookAgain() {
    second_look_pending_ = false;
    const LoadedSettings loaded = ReadAndApply();
    if (!doubt_)
        return;
    if (ini_.ReadProblem()) {
        notices_.Report("settings reading", WhyNotRead(world_.settings_store, ini_), "");
        return;
    }
    world_.notice(WhyServiceEnds(world_.settings_store, loaded));
    if (loaded.enabled)
        link_.Close();
    EndProcess();
}

void TarnexComm::Apply(const Settings& settings) {
    settings_ = settings;
    link_.HandShake.Enable();
    log_.Open(settings_.LogPath);
}

void TarnexComm::TellOfRestart(const StartSettings& now) {
    // Of two readings in a row: one may have met a file that is just being written.
    std::string reason = WhyRestart(world_.settings_store, start_settings_, now);
    if (reason == restart_reason_)
        notices_.Report("settings at start", reason,
                        "The settings in " + world_.settings_store.Name() +
                            " are those again that this service was started with.");
    restart_reason_ = std::move(reason);
}

void TarnexComm::ShowWindow(bool visible) {
    window_.SetVisible(visible);
    if (!visible) // these are reached from the main window only
        for (Form* window : {static_cast<Form*>(&mail_window_), static_cast<Form*>(&core_window_)})
            window->SetVisible(false);
    // The status display ticks only while somebody can see it.
    if (WindowShown())
        Timer1_.Enable();
    else
        Timer1_.Disable();
}

void TarnexComm::WireButtons() {
    window_.Command1.OnClick([this] { PressStop(); });
    window_.Command2.OnClick([this] { SwitchDebug(); });
    window_.Command3.OnClick([this] { ToggleWidth(window_.mList1, kEventListWidths); });
    window_.Command4.OnClick([this] { ClearLists(); });
    window_.Command5.OnClick([this] { ToggleWidth(window_.List1, kDebugListWidths); });
    window_.Command6.OnClick([this] { window_.List2.SetVisible(!window_.List2.Visible()); });
    window_.mCmdSend.OnClick([this] { queue_.mCmdSend_Click(); });
    window_.mCmdMail.OnClick([this] { mail_window_.SetVisible(true); });
    window_.mCmdCore.OnClick([this] { core_window_.SetVisible(true); });
    window_.mCmdLinkCheck.OnClick([this] { ShowLinkCheck(); });
    window_.mCMDExit.OnClick([this] { LeaveByHand(); });
    window_.OnClose([this] { LeaveByHand(); });
}

// What stands still looks the same as what has nothing to do, so the operator is told.
void TarnexComm::PressStop() {
    StopAllTimers();
    for (const TextView line :
         {u"Stop：已停止查找和巡检设备、发送短信、发送邮件、心跳和链路检查。",
          u"通知仍然记录和排队，但不发出；设置刷新和状态显示继续。",
          u"重新开始：按Exit结束服务，再启动它(systemctl start tarnexcomm)。"})
        window_.mList1.Add(Text(line));
}

void TarnexComm::SwitchDebug() {
    reset_in_doubt_ = false;
    const bool on = window_.Command2.Caption() == u"DebugOn";
    window_.Command2.SetCaption(on ? u"DebugOff" : u"DebugOn");
    lists_.DebugOn = on;
    core_.OCXDebug(on ? u"On" : u"Off");
}

void TarnexComm::ClearLists() {
    for (ListBox* list : {&window_.mList2, &window_.mList3, &window_.mList4, &window_.mList5,
                          &window_.List1, &window_.List2})
        list->Clear();
}

void TarnexComm::ShowLinkCheck() {
    lists_.mList3Additem(link_.LinkCheck() ? u"True" : u"False");
}

void TarnexComm::LeaveByHand() {
    if (core_.firmware.ProgramIncomplete() && !std::exchange(leave_warned_, true))
        window_.mList1.Add(Text(kCloseWarning));
    else
        Form_Unload();
}

void TarnexComm::Form_Unload() {
    if (ended_)
        return;
    if (!ExWindowsState_) {
        StopAllTimers();
        link_.SendEnd();
        link_.Close();
    }
    world_.instance_lock.KillLeftOver();
    EndProcess();
}

void TarnexComm::EndProcess() {
    if (ended_)
        return;
    ended_ = true;
    StopAllTimers();
    AutoReloadSettingsTimer_.Stop();
    Timer1_.Stop();
    status_.Stop();
    // From the loop, since a handler that waits half-way may stand on the stack now.
    end_ = world_.clock.CallAfter(0ms, [this] {
        stoppable_.CancelHandlers();
        core_window_.Cancel();
        world_.end_process();
    });
}

} // namespace tarnex
