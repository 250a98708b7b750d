#include "adapters/linux/systemd_controller.h"

#include "adapters/linux/systemd_calls.h"
#include "adapters/system/replace_file.h"
#include "adapters/system/service_manager.h"
#include "systemd_unit_template.h"

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

#include <pwd.h>
#include <syslog.h>

namespace tarnex {

namespace {

constexpr const char* kUnitName = "tarnexcomm.service";
constexpr std::string_view kParameters = "\n[X-Parameters]\n";
constexpr int kAcceptsPauseAndContinue = 2;
constexpr Duration kUnitChangeLimit = 60s; // a machine with many units reloads for seconds
constexpr Duration kStateQueryLimit = 500ms;

int Priority(EventType type) {
    switch (type) {
    case EventType::kError:
        return LOG_ERR;
    case EventType::kWarning:
        return LOG_WARNING;
    case EventType::kInformation:
        return LOG_INFO;
    }
    return LOG_INFO;
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::optional<std::string> ReadFile(const std::string& path) {
    const File file(std::fopen(path.c_str(), "rbe"));
    if (!file)
        return std::nullopt;
    std::string content;
    char block[4096];
    while (const std::size_t got = std::fread(block, 1, sizeof block, file.get()))
        content.append(block, got);
    return std::ferror(file.get()) ? std::nullopt : std::optional(content);
}

// A path between quotes in a unit file; systemd refuses paths with quotes or backslashes.
std::string Escaped(std::string_view path) {
    std::string escaped;
    for (const char c : path)
        escaped.append(c == '%' ? 2 : 1, c);
    return escaped;
}

void Replace(std::string& unit, std::string_view present, std::string_view wanted) {
    if (const auto at = unit.find(present); at != std::string::npos)
        unit.replace(at, present.size(), wanted);
}

bool StandsInAHomeFolder(std::string_view path) {
    return path.starts_with("/home/") || path.starts_with("/root/");
}

} // namespace

std::string SystemdUnitText(std::string_view executable, bool user_exists) {
    std::string unit(kSystemdUnitTemplate);
    Replace(unit, "@TARNEXCOMM@", Escaped(executable));
    if (!user_exists)
        Replace(unit, "User=" + std::string(kServiceUser) + "\n", "");
    if (StandsInAHomeFolder(executable))
        Replace(unit, "ProtectHome=yes", "ProtectHome=read-only");
    return unit;
}

std::string WithUnitParameter(std::string unit, std::string_view name, std::string_view value) {
    const std::string key = std::string(name) + "=";
    std::size_t section = unit.find(kParameters);
    if (section == std::string::npos) {
        section = unit.size();
        unit += kParameters;
    }
    if (const auto present = unit.find("\n" + key, section); present != std::string::npos)
        unit.erase(present + 1, unit.find('\n', present + 1) - present);
    return unit + key + std::string(value) + "\n";
}

SystemdController::SystemdController(Clock& clock, AsioLoop& loop, SystemdPlaces places)
    : clock_(clock), signals_(loop), places_(std::move(places)),
      unit_path_(places_.unit_folder + "/" + kUnitName),
      watchdog_(clock, Duration::zero(), [] { NotifySystemd("WATCHDOG=1"); }) {}

bool SystemdController::SystemdRuns() const {
    std::error_code ignored;
    return std::filesystem::exists(places_.running_mark, ignored);
}

bool SystemdController::Systemctl(std::vector<std::string> arguments) const {
    // Without the superuser's rights it must fail, not ask for them.
    arguments.insert(arguments.begin(), {places_.systemctl, "--no-ask-password"});
    const auto result = RunCommand(arguments, kUnitChangeLimit);
    return result && result->succeeded;
}

bool SystemdController::Install(bool) {
    std::error_code unknown;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", unknown);
    if (unknown || !SystemdRuns())
        return false;
    const auto before = ReadFile(unit_path_);
    const bool user_exists = getpwnam(kServiceUser) != nullptr;
    if (ReplaceFile(unit_path_, SystemdUnitText(executable.string(), user_exists)))
        return false;
    if (Systemctl({"daemon-reload"}) && Systemctl({"enable", kUnitName}))
        return true;
    if (before)
        ReplaceFile(unit_path_, *before);
    else
        std::remove(unit_path_.c_str());
    Systemctl({"daemon-reload"});
    return false;
}

bool SystemdController::Uninstall() {
    if (!SystemdRuns() || !ReadFile(unit_path_))
        return false;
    return Systemctl({"disable", kUnitName}) && std::remove(unit_path_.c_str()) == 0 &&
           Systemctl({"daemon-reload"});
}

void SystemdController::SaveParameter(std::string_view name, std::string_view value) {
    const auto unit = ReadFile(unit_path_);
    if (unit && !ReplaceFile(unit_path_, WithUnitParameter(*unit, name, value)))
        Systemctl({"daemon-reload"});
}

void SystemdController::StartService(int controls_accepted, ServiceEvents events) {
    events_ = std::move(events);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        signals_.On(signal, [this] { Stop(); });
    if (controls_accepted & kAcceptsPauseAndContinue) {
        signals_.On(SIGUSR1, [this] { events_.pause(); });
        signals_.On(SIGUSR2, [this] { events_.resume(); });
    }
    watchdog_.SetInterval(WatchdogPatience() / 2);
    watchdog_.Enable();
    clock_.CallAfter(Duration::zero(), [this] { events_.start(); });
}

void SystemdController::Stop() {
    if (!std::exchange(stopping_, true))
        events_.stop(MachineIsEnding());
}

bool SystemdController::MachineIsEnding() const {
    if (!SystemdRuns())
        return false;
    const auto result = RunCommand({places_.systemctl, "is-system-running"}, kStateQueryLimit);
    return result && result->output == "stopping\n";
}

void SystemdController::ReportReady() {
    NotifySystemd("READY=1");
}

void SystemdController::LogEvent(EventType type, int number, std::string_view text) {
    openlog("tarnexcomm", LOG_PID, LOG_DAEMON);
    syslog(Priority(type), "event %d: %.*s", number, static_cast<int>(text.size()), text.data());
}

std::unique_ptr<ServiceController> MakeServiceController(AsioLoop& loop, SetupFailed) {
    return std::make_unique<SystemdController>(loop, loop);
}

// systemd sees the end of the process, and its status.
void ReportEndOfService(int) {}

} // namespace tarnex
