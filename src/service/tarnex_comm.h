#pragma once

#include "service/service_windows.h"
#include "service/status_report.h"
#include "service/unit_history.h"
#include "settings/load_settings.h"

namespace tarnex {

// The service: starts, resets and stops its parts, and keeps the settings loaded.
class TarnexComm {
  public:
    using World = ServiceWorld;
    explicit TarnexComm(World world);
    ~TarnexComm();
    TarnexComm(const TarnexComm&) = delete;
    TarnexComm& operator=(const TarnexComm&) = delete;

    // The start of the program. command_line: the arguments, joined by one blank. "/i" installs
    // and "/u" removes the service, and only "" runs it; in every other case the process ends.
    void Form_Load(const std::string& command_line);
    // Orderly shut-down; ends the process. Harmless a second time.
    void Form_Unload();
    // Begins anew with the settings and the unit.
    void ResetUnitState();
    // Lists whether a monitoring program is connected.
    void ShowLinkCheck() { windows_.ShowLinkCheck(); }

    // To a request of another program, as SendAgain's.
    std::string Answer(const std::string& request) { return parts_.again.Answer(request); }
    // Its process ends, or is not needed.
    bool Ended() const { return ended_; }

    MainWindow& Window() { return parts_.window; }
    const UnitState& Unit() const { return parts_.unit; }
    // For those who look at it from outside.
    const ServiceParts& Parts() const { return parts_; }

  private:
    void Install();
    // Stops the timers of all parts but the settings reload and the status display.
    void StopAllTimers() { stoppable_.StopAll(); }
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
    void FollowSms();
    // Shows the main job's watch what nobody tells it.
    void LookAtMainJob();
    void EndProcess();

    ServiceParts parts_;
    ServiceWindows windows_;
    StatusReport status_;
    UnitHistory unit_history_;
    StartSettings start_settings_;
    Timer AutoReloadSettingsTimer_;
    TimerList stoppable_; // what the button "Stop" stops
    CallId second_look_;
    bool second_look_pending_ = false;
    bool doubt_ = false; // about the last reading
    // What the last reset took from the settings is to be taken again; an operator who presses
    // DebugOn meanwhile has decided it.
    bool reset_in_doubt_ = false;
    std::string restart_reason_;  // as the last reading gave it
    bool ExWindowsState_ = false; // the machine is shutting down: nobody is told of our end
    bool ended_ = false;
    CallId end_;
};

} // namespace tarnex
