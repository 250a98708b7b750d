#pragma once

#include "mail/mail_sender.h"
#include "notify/dispatcher.h"
#include "platform/service_controller.h"
#include "service/core_window.h"
#include "service/mail_window.h"
#include "service/main_window.h"
#include "service/status_report.h"
#include "settings/load_settings.h"
#include "supervision/connection_supervision.h"
#include "supervision/supervision_cycle.h"
#include "ui/view.h"

namespace tarnex {

// The service: builds its parts, starts and stops them, and keeps the settings loaded.
class TarnexComm {
  public:
    // The world that the service works in; everything must outlive the service.
    struct World {
        Clock& clock;
        SerialPorts& serial_ports;
        DatagramSockets& sockets;
        TcpClients& tcp;
        LogTable& log_table;
        SettingsStore& settings_store;
        LineFiles& files;
        const CodePage& code_page;
        ServiceController& controller;
        InstanceLock& instance_lock;
        View* view;                   // nullptr: no windows
        OperatorNotices::Sink notice; // for what an operator must act on
        MainWindow::Echo echo;        // for list lines on no screen; may be empty
        // Called before the settings are first used, by an instance that may use them: what it
        // goes on with until its end. Nothing: they cannot be read, and the process must end.
        std::function<std::optional<StartSettings>()> take_start_settings;
        std::function<void()> end_process; // ends the loop, and with it the process
        StatusSink* status = nullptr;      // nullptr: nobody is told of the state
        long process_id = 0;               // told with it
    };
    explicit TarnexComm(World world);
    ~TarnexComm();
    TarnexComm(const TarnexComm&) = delete;
    TarnexComm& operator=(const TarnexComm&) = delete;

    // The start of the program. command_line: the arguments, joined by one blank. "/i" installs
    // and "/u" removes the service, and only "" runs it; in every other case the process ends.
    void Form_Load(const std::string& command_line);
    // Orderly shut-down; ends the process. Harmless a second time.
    void Form_Unload();
    // The machine is shutting down: the monitoring programs are not told of our end.
    void WriteExWindowsState(bool state) { ExWindowsState_ = state; }
    // Begins anew with the settings and the unit.
    void ResetUnitState();
    // Stops the timers of all parts but the settings reload and the status display.
    void StopAllTimers() { stoppable_.StopAll(); }
    // Lists whether a monitoring program is connected.
    void ShowLinkCheck();

    MainWindow& Window() { return window_; }
    const UnitState& Unit() const { return unit_; }

  private:
    void Install();
    bool TakeStartSettings();
    ServiceEvents ControllerEvents();
    void LoadSettings();
    void TakeNumberSwitches();
    // Reads them and takes them over, unless there is doubt: the file cannot be read, or leaves a
    // run gate closed.
    LoadedSettings ReadAndApply();
    // A closed run gate counts only when a second reading says the same.
    void LookAgain();
    void Apply(const Settings& settings);
    void TellOfRestart(const StartSettings& now);
    // What a reset takes from the settings for the time until the next one.
    void TakeSearchAndDebug();
    void ShowWindow(bool visible);
    bool WindowShown() const { return on_screen_ && on_screen_->Shown(); }
    void WireButtons();
    void PressStop();
    void SwitchDebug();
    void ClearLists();
    // By the window: while the unit's program is incomplete, only a second call of it ends.
    void LeaveByHand();
    void EndProcess();

    World world_;
    MainWindow window_;
    OperatorNotices notices_;
    DebugLists lists_;
    MyIniFile ini_;
    Settings settings_;
    StartSettings start_settings_;
    UnitState unit_;
    LogWriter log_;
    TarnexCore core_;
    MailSender mail_;
    MailWindow mail_window_;
    SMSQueue queue_;
    SMSMsgCodec codec_;
    Dispatcher dispatcher_;
    ControlLink link_;
    SupervisionCycle cycle_;
    ConnectionSupervision connection_;
    CoreWindow core_window_;
    StatusReport status_;
    Timer AutoReloadSettingsTimer_;
    Timer Timer1_;
    TimerList stoppable_; // what the button "Stop" stops
    CallId second_look_;
    bool second_look_pending_ = false;
    bool doubt_ = false; // about the last reading
    // What the last reset took from the settings is to be taken again; an operator who presses
    // DebugOn meanwhile has decided it.
    bool reset_in_doubt_ = false;
    std::string restart_reason_; // as the last reading gave it
    bool ExWindowsState_ = false;
    bool leave_warned_ = false; // of the update at work
    bool ended_ = false;
    CallId end_;
    std::unique_ptr<FormWindow> on_screen_; // the main window; nullptr without a view
    std::unique_ptr<FormWindow> mail_on_screen_;
    std::unique_ptr<FormWindow> core_on_screen_;
};

} // namespace tarnex
