#pragma once

#include "adapters/linux/signals.h"
#include "platform/clock.h"
#include "platform/service_controller.h"
#include "platform/timer.h"

#include <string>
#include <string_view>
#include <vector>

namespace tarnex {

// The user that the service runs as.
inline constexpr const char* kServiceUser = "tarnexcomm";

// The text of the unit file that starts executable (a whole path) as a service with the machine:
// that of the package, made to work for a program that nobody has packaged. user_exists: whether
// the machine has kServiceUser; otherwise the superuser runs it, within the same limits.
std::string SystemdUnitText(std::string_view executable, bool user_exists);

// unit with name=value in its last section, the parameters, which systemd itself skips; instead of
// the present value, if there is one.
std::string WithUnitParameter(std::string unit, std::string_view name, std::string_view value);

// Where systemd is met; other places are for tests.
struct SystemdPlaces {
    std::string unit_folder = "/etc/systemd/system";
    std::string systemctl = "systemctl";
    std::string running_mark = "/run/systemd/system"; // there while systemd runs the machine
};

// systemd as the service manager: SIGTERM and SIGINT stop, SIGUSR1 pauses, SIGUSR2 continues.
// Without it the end of the terminal, SIGHUP, stops too.
class SystemdController : public ServiceController {
  public:
    SystemdController(Clock& clock, AsioLoop& loop, SystemdPlaces places = {});

    // Writes and enables a unit for this executable; interactive has no meaning here. Needs the
    // superuser's rights and a machine run by systemd; after a failure all is as it was before.
    bool Install(bool interactive) override;
    // False as well when no unit is installed.
    bool Uninstall() override;
    void SaveParameter(std::string_view name, std::string_view value) override;
    // start is called once from the loop, stop once at most. Before stop, systemd is asked whether
    // the machine is going down, which takes 500 ms at the worst. The watchdog, if there is one, is
    // fed twice in its time by a call of the loop and by nothing else: a handler that hangs starves
    // it.
    void StartService(int controls_accepted, ServiceEvents events) override;
    void ReportReady() override;
    void LogEvent(EventType type, int number, std::string_view text) override;

  private:
    bool SystemdRuns() const;
    bool MachineIsEnding() const;
    bool Systemctl(std::vector<std::string> arguments) const;
    void Stop();

    Clock& clock_;
    Signals signals_;
    SystemdPlaces places_;
    std::string unit_path_;
    ServiceEvents events_;
    Timer watchdog_;
    bool stopping_ = false;
};

} // namespace tarnex
