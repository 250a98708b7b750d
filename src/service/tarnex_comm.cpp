#include "service/tarnex_comm.h"

#include "device/flash_report.h"
#include "service/settings_notices.h"
#include "settings/setting_table.h"

namespace tarnex {

namespace {

constexpr Duration kReloadPeriod = 10s;
constexpr Duration kSecondLook = 100ms;
constexpr Duration kFirstSearch = 15s;
constexpr int kAcceptPauseAndContinue = 2;
constexpr int kHistorySize = 50; // MB
constexpr int kPausedEvent = 109;
constexpr int kContinuedEvent = 110;

} // namespace

TarnexComm::TarnexComm(World world)
    : parts_(std::move(world), {.reset_unit_state = [this] { ResetUnitState(); },
                                .take_number_switches = [this] { TakeNumberSwitches(); },
                                .window_shown = [this] { return windows_.Shown(); }}),
      windows_(parts_, {.stop_all_timers = [this] { StopAllTimers(); },
                        .debug_decided = [this] { reset_in_doubt_ = false; },
                        .leave = [this] { Form_Unload(); }}),
      status_(parts_),
      unit_history_(parts_.world.clock, parts_.unit, parts_.settings, parts_.messages),
      AutoReloadSettingsTimer_(parts_.world.clock, kReloadPeriod, [this] {
          LoadSettings();
          LookAtMainJob();
          parts_.again.LookBack();
      }) {
    for (Timer* timer : {&parts_.link.HandShake, &parts_.link.ConnectServiceLost,
                         &parts_.cycle.mCheckTimer, &parts_.queue.mSMSSendTimer,
                         &parts_.queue.mSMSSendChkTimer, &parts_.connection.mAutoConnect})
        stoppable_.Add(*timer);
    FollowSms();
    for (const TimerList* form : {&parts_.mail.Timers(), &parts_.core.timers})
        for (Timer* timer : form->All())
            stoppable_.Add(*timer);
}

TarnexComm::~TarnexComm() {
    parts_.world.clock.Cancel(second_look_);
    parts_.world.clock.Cancel(end_);
}

void TarnexComm::Form_Load(const std::string& command_line) {
    if (command_line == "/i")
        Install();
    else if (command_line == "/u")
        parts_.world.controller.Uninstall();
    if (!command_line.empty()) {
        EndProcess();
        return;
    }
    parts_.world.controller.StartService(kAcceptPauseAndContinue, ControllerEvents());
    if (!parts_.world.instance_lock.Acquire() || !TakeStartSettings()) {
        EndProcess();
        return;
    }
    AutoReloadSettingsTimer_.Enable();
    parts_.link.Open();
    ResetUnitState();
    parts_.again.Start();
    status_.Start();
    parts_.world.clock.BeforeSleep([this] {
        status_.Look();
        unit_history_.Look();
    });
    parts_.world.controller.ReportReady();
}

void TarnexComm::Install() {
    if (!parts_.world.controller.Install(true))
        return;
    parts_.world.controller.SaveParameter("TimerInterval", "300");
    if (TakeStartSettings())
        ResetUnitState();
}

bool TarnexComm::TakeStartSettings() {
    const std::optional<StartSettings> taken = parts_.world.take_start_settings();
    start_settings_ = taken.value_or(StartSettings());
    return taken.has_value();
}

ServiceEvents TarnexComm::ControllerEvents() {
    return {
        .start = [] {}, // Form_Load has begun the work
        .stop =
            [this](bool system_ending) {
                ExWindowsState_ = system_ending;
                Form_Unload();
            },
        .pause =
            [this] {
                parts_.world.controller.LogEvent(EventType::kError, kPausedEvent, "Service paused");
            },
        .resume =
            [this] {
                parts_.world.controller.LogEvent(EventType::kInformation, kContinuedEvent,
                                                 "Service continued");
            },
        .before_system_end =
            [this] {
                return parts_.core.firmware.ProgramIncomplete() ? ToUtf8(kSystemEndWarning) : "";
            }};
}

void TarnexComm::ResetUnitState() {
    parts_.unit.BeginAnew();
    LoadSettings();
    reset_in_doubt_ = doubt_;
    parts_.link.Reset();
    const unsigned long dropped = parts_.queue.Totals().DroppedByReset;
    parts_.queue.Reset();
    parts_.main_job.BegunAnew(parts_.queue.Totals().DroppedByReset - dropped);
    parts_.cycle.Reset();
    parts_.connection.mAutoConnect.Reset(kFirstSearch);
    TakeSearchAndDebug();
}

void TarnexComm::TakeSearchAndDebug() {
    const bool debug = parts_.ini.IsOn("debug-mode"_setting);
    parts_.core.OCXDebug(debug ? u"On" : u"Off");
    parts_.lists.DebugOn = debug;
    windows_.Show(debug);
    if (parts_.settings.AutoSearchOff)
        parts_.connection.mAutoConnect.Disable();
    else if (!parts_.unit.UnitConnected && !parts_.unit.UnitBusy())
        parts_.connection.mAutoConnect.Enable();
}

void TarnexComm::LoadSettings() {
    ReadAndApply();
    if (doubt_ && !second_look_pending_) {
        // Other programs rewrite the file in place: it may stand half-written just now.
        second_look_pending_ = true;
        second_look_ = parts_.world.clock.CallAfter(kSecondLook, [this] { LookAgain(); });
    }
}

LoadedSettings TarnexComm::ReadAndApply() {
    const LoadedSettings loaded = ReadSettings(*parts_.ini.Snapshot(), parts_.settings);
    doubt_ = parts_.ini.ReadProblem() || !loaded.enabled || !loaded.allowed;
    if (doubt_)
        return loaded;
    Apply(loaded.settings);
    TellOfRestart(loaded.start);
    const std::string name = parts_.world.settings_store.Name();
    parts_.notices.Report("settings reading", "",
                          "The settings file " + name + " can be read again.");
    parts_.notices.Report("settings", WhyNotWritten(parts_.world.settings_store, parts_.ini),
                          "The settings file " + name + " is written again.");
    if (std::exchange(reset_in_doubt_, false))
        TakeSearchAndDebug();
    return loaded;
}

void TarnexComm::TakeNumberSwitches() {
    parts_.settings.SwitchCheck42 = parts_.ini.IsOn("sms-to-number-1"_setting);
    parts_.settings.SwitchCheck43 = parts_.ini.IsOn("sms-to-number-2"_setting);
}

void TarnexComm::LookAgain() {
    second_look_pending_ = false;
    const LoadedSettings loaded = ReadAndApply();
    if (!doubt_)
        return;
    if (parts_.ini.ReadProblem()) {
        parts_.notices.Report("settings reading",
                              WhyNotRead(parts_.world.settings_store, parts_.ini), "");
        return;
    }
    parts_.world.notice(NoticeLevel::kError, WhyServiceEnds(parts_.world.settings_store, loaded));
    if (loaded.enabled)
        parts_.link.Close();
    EndProcess();
}

void TarnexComm::Apply(const Settings& settings) {
    parts_.settings = settings;
    parts_.link.HandShake.Enable();
    parts_.log.Open(parts_.settings.LogPath);
    parts_.world.history.KeepTo(settings.HistorySize > 0 ? settings.HistorySize : kHistorySize);
}

void TarnexComm::TellOfRestart(const StartSettings& now) {
    // Of two readings in a row: one may have met a file that is just being written.
    std::string reason =
        WhyRestart(parts_.world.settings_store, start_settings_, now, parts_.world.words);
    if (reason == restart_reason_)
        parts_.notices.Report("settings at start", reason,
                              "The settings in " + parts_.world.settings_store.Name() +
                                  " are those again that this service was started with.");
    restart_reason_ = std::move(reason);
}

void TarnexComm::FollowSms() {
    parts_.messages.OnFate([this](MessageId, const LedgerEntry& message, Fate fate) {
        if (message.way != MessageWay::kSMS)
            return;
        if (fate == Fate::kSent)
            parts_.main_job.SmsSent();
        else if (fate == Fate::kGivenUp)
            parts_.main_job.SmsGivenUp(message.number, message.results);
    });
}

void TarnexComm::LookAtMainJob() {
    const MailStatus mail = parts_.mail.Status();
    parts_.main_job.Look(
        {.searching = !parts_.settings.AutoSearchOff,
         .numbers = {parts_.ini.GetIniStr("alarm-number-1"_setting),
                     parts_.ini.GetIniStr("alarm-number-2"_setting)},
         .sms = {.waiting = parts_.queue.Length(),
                 .room = kSMSFifoSize,
                 .pushed_out = parts_.queue.Totals().PushedOut},
         .mail = {.waiting = mail.queued, .room = MailSender::kRoom, .pushed_out = mail.dropped}});
}

void TarnexComm::Form_Unload() {
    if (ended_)
        return;
    if (!ExWindowsState_) {
        StopAllTimers();
        parts_.link.SendEnd();
        parts_.link.Close();
    }
    parts_.world.instance_lock.KillLeftOver();
    EndProcess();
}

void TarnexComm::EndProcess() {
    if (ended_)
        return;
    ended_ = true;
    StopAllTimers();
    AutoReloadSettingsTimer_.Stop();
    windows_.StopDisplay();
    parts_.world.clock.BeforeSleep(nullptr);
    status_.Stop();
    parts_.again.Stop();
    // From the loop, since a handler that waits half-way may stand on the stack now.
    end_ = parts_.world.clock.CallAfter(0ms, [this] {
        stoppable_.CancelHandlers();
        windows_.Cancel();
        parts_.world.end_process();
    });
}

} // namespace tarnex
