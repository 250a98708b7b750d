// Measures the system in one process: simulated days, notifications, port scans. Prints one line a
// figure; the aim and the limit of each stand beside it.

#include "adapters/sqlite/sqlite_history.h"
#include "adapters/sqlite/sqlite_log_table.h"
#include "tests/scenarios/simulated_system.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>

#include <sqlite3.h>
#include <sys/resource.h>
#include <unistd.h>

namespace tarnex {
namespace {

double CpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) {
        return double(t.tv_sec) + double(t.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void Print(const char* what, double value, const char* unit, const char* aim) {
    std::printf("%-52s %10.3f %-3s (%s)\n", what, value, unit, aim);
    std::fflush(stdout);
}

void Check(bool condition, const char* what) {
    if (condition)
        return;
    std::fprintf(stderr, "benchmark: %s\n", what);
    std::exit(1);
}

void MeasureSimulatedDays() {
    SimulatedSystem system;
    Monitor second(system.clock, system.network, system.code_page, {.link = 1, .name = u"second"});
    system.StartService();
    system.monitor.Start();
    second.Start();
    const double before = CpuSeconds();
    system.clock.RunFor(24h * 30);
    const double used = CpuSeconds() - before;
    Check(system.service->Unit().UnitReady, "the unit is not ready after 30 days");
    Print("30 simulated days, unit connected, 2 monitors", used, "s", "aim 3, limit 10");
    Print("  commands to the unit in that time", double(system.unit.Count("RDCSQ")), "", "");
}

class TemporaryFiles {
  public:
    TemporaryFiles() {
        std::filesystem::create_directory(folder_);
        sqlite3* database = nullptr;
        std::string sql = "PRAGMA journal_mode=WAL; CREATE TABLE Log (id INTEGER PRIMARY KEY";
        for (int i = 1; i <= 12; ++i)
            sql += ", c" + std::to_string(i) + " TEXT";
        Check(sqlite3_open(LogPath().c_str(), &database) == SQLITE_OK, "cannot make a database");
        Check(sqlite3_exec(database, (sql + ");").c_str(), nullptr, nullptr, nullptr) == SQLITE_OK,
              "cannot make the table");
        sqlite3_close(database);
    }
    ~TemporaryFiles() { std::filesystem::remove_all(folder_); }
    std::string LogPath() const { return (folder_ / "log.db").string(); }
    std::string HistoryPath() const { return (folder_ / "history.db").string(); }

  private:
    std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / ("tarnex-benchmark." + std::to_string(getpid()));
};

void MeasureNotifications() {
    constexpr int kNotifications = 20'000;
    const TemporaryFiles files;
    SqliteLogTable table;
    SqliteHistory history(files.HistoryPath());
    SimulatedSystem system;
    system.log_table = &table;
    system.message_history = &history;
    system.Set(u"Text", u"Text1(37)", FromUtf8(files.LogPath()));
    system.StartService();
    system.monitor.Start();
    system.clock.RunFor(1min);
    const MonitorEvent event{.service = 3, .state = 1, .machine_name = u"srv", .memo = u"98%"};
    const double before = CpuSeconds();
    for (int i = 0; i < kNotifications; ++i) {
        system.monitor.SendEvent(event);
        system.clock.RunFor(0ms);
    }
    const double used = CpuSeconds() - before;
    Check(system.said.empty(), "rows were lost");
    Print("a notification queued, with its rows in both files", used * 1e3 / kNotifications, "ms",
          "aim 0.1, limit 0.5");
}

void MeasureScan() {
    constexpr int kScans = 1000;
    SimulatedSystem system;
    for (int number = 1; number <= 20; ++number)
        if (number != 3)
            system.ports.SetStatus(number, PortStatus::kOk);
    system.unit.Faults.Silent = true;
    system.StartService();
    const double before = CpuSeconds();
    system.clock.RunFor(kScans * 105s);
    Print("20 silent ports scanned (100 simulated seconds)", (CpuSeconds() - before) * 1e3 / kScans,
          "ms", "");
}

} // namespace
} // namespace tarnex

int main() {
    tarnex::MeasureSimulatedDays();
    tarnex::MeasureNotifications();
    tarnex::MeasureScan();
    return 0;
}
