#include "adapters/linux/systemd_controller.h"
#include "adapters/linux/systemd_unit.h"
#include "adapters/linux/unique_fd.h"
#include "simulator/simulated_clock.h"
#include "tests/adapters/run_until.h"
#include "tests/temp_folder.h"

#include <algorithm>
#include <csignal>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace tarnex {
namespace {

constexpr const char* kUnit = "tarnexcomm.service";

// Notes how it was called; fails for the word in "fail", and says the state in "state".
constexpr const char* kFakeSystemctl = R"sh(#!/bin/sh
cd "$(dirname "$0")"
echo "$*" >> calls
for word in "$@"; do
    if [ "$word" = "$(cat fail)" ]; then exit 1; fi
    if [ "$word" = is-system-running ]; then
        if [ "$(cat state)" = hanging ]; then exec sleep 300; fi
        cat state
        exit 1
    fi
done
)sh";

struct Systemd : testing::Test {
    TempFolder folder;
    AsioLoop loop;
    const SystemdPlaces places{.unit_folder = folder.Path(),
                               .systemctl = folder.Path("ctl"),
                               .running_mark = folder.Path("mark")};
    SystemdController controller{loop, loop, places};

    Systemd() {
        folder.Write("ctl", kFakeSystemctl);
        chmod(folder.Path("ctl").c_str(), 0755);
        folder.Write("mark", "");
        folder.Write("fail", "nothing");
        folder.Write("state", "running\n");
    }
    std::string TakeCalls() {
        const std::string calls = folder.Read("calls");
        std::filesystem::remove(folder.Path("calls"));
        return calls;
    }
};

TEST_F(Systemd, InstallsAUnitForThisProgramAndTakesItAway) {
    ASSERT_TRUE(controller.Install(true));
    EXPECT_EQ(TakeCalls(), "--no-ask-password daemon-reload\n"
                           "--no-ask-password enable tarnexcomm.service\n");
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_NE(folder.Read(kUnit).find("\nExecStart=\"" + self + "\"\n"), std::string::npos);
    struct stat file {};
    ASSERT_EQ(stat(folder.Path(kUnit).c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 07777, 0644u);

    const std::string unit = folder.Read(kUnit);
    controller.SaveParameter("TimerInterval", "300");
    controller.SaveParameter("Other", "x");
    controller.SaveParameter("TimerInterval", "200");
    EXPECT_EQ(folder.Read(kUnit), unit + "\n[X-Parameters]\nOther=x\nTimerInterval=200\n");
    TakeCalls();

    EXPECT_TRUE(controller.Uninstall());
    EXPECT_FALSE(folder.Has(kUnit));
    EXPECT_EQ(TakeCalls(), "--no-ask-password disable tarnexcomm.service\n"
                           "--no-ask-password daemon-reload\n");
    EXPECT_FALSE(controller.Uninstall());
    controller.SaveParameter("TimerInterval", "300");
    EXPECT_FALSE(folder.Has(kUnit));
}

TEST(SystemdUnit, SuitsTheProgramAndTheMachine) {
    struct Row {
        const char* executable;
        bool user_exists;
        std::vector<std::string> lines;
        std::vector<std::string> no_lines;
    };
    for (const Row& row :
         {Row{"/opt/alarm 50%/tarnexcomm",
              true,
              {"ExecStart=\"/opt/alarm 50%%/tarnexcomm\"", "User=tarnexcomm", "ProtectHome=yes"},
              {"ProtectHome=read-only"}},
          Row{"/home/anna/bin/tarnexcomm",
              false,
              {"ExecStart=\"/home/anna/bin/tarnexcomm\"", "ProtectHome=read-only"},
              {"User=tarnexcomm", "ProtectHome=yes"}}}) {
        const std::string unit = SystemdUnitText(row.executable, row.user_exists);
        for (const std::string& line : row.lines)
            EXPECT_NE(unit.find("\n" + line + "\n"), std::string::npos) << line;
        for (const std::string& line : row.no_lines)
            EXPECT_EQ(unit.find("\n" + line + "\n"), std::string::npos) << line;
    }
}

TEST_F(Systemd, AFailedInstallLeavesWhatWasThere) {
    for (const char* step : {"daemon-reload", "enable"}) {
        folder.Write("fail", step);
        EXPECT_FALSE(controller.Install(true));
        EXPECT_FALSE(folder.Has(kUnit));
    }
    folder.Write(kUnit, "an older unit\n");
    EXPECT_FALSE(controller.Install(true));
    EXPECT_EQ(folder.Read(kUnit), "an older unit\n");
    folder.Write("fail", "disable");
    EXPECT_FALSE(controller.Uninstall());
    EXPECT_TRUE(folder.Has(kUnit));

    TakeCalls();
    std::filesystem::remove(folder.Path(kUnit));
    std::filesystem::remove(folder.Path("mark")); // another service manager runs the machine
    EXPECT_FALSE(controller.Install(true));
    EXPECT_FALSE(folder.Has(kUnit));
    EXPECT_FALSE(folder.Has(std::string(kUnit) + ".new"));
    EXPECT_EQ(TakeCalls(), "");
}

TEST_F(Systemd, SignalsAreTheServiceEvents) {
    std::string told;
    controller.StartService(2, {.start = [&] { told += "start "; },
                                .stop = [&](bool ending) { told += ending ? "END " : "stop "; },
                                .pause = [&] { told += "pause "; },
                                .resume = [&] { told += "resume "; }});
    EXPECT_EQ(told, "");
    ASSERT_TRUE(RunUntil(loop, [&] { return told == "start "; }));
    for (const auto& [signal, after] :
         {std::pair(SIGUSR1, "start pause "), std::pair(SIGUSR2, "start pause resume "),
          std::pair(SIGTERM, "start pause resume stop ")}) {
        raise(signal);
        ASSERT_TRUE(RunUntil(loop, [&, text = after] { return told == text; })) << told;
    }
    raise(SIGTERM);
    raise(SIGINT);
    EXPECT_FALSE(RunUntil(
        loop, [&] { return told.size() > 25; }, 30ms))
        << told;
}

TEST_F(Systemd, AStopSaysWhetherTheMachineIsEnding) {
    struct Row {
        const char* state;
        bool ending;
    };
    for (const Row& row :
         {Row{"stopping\n", true}, Row{"degraded\n", false}, Row{"hanging", false}}) {
        folder.Write("state", row.state);
        AsioLoop own_loop;
        SystemdController fresh(own_loop, own_loop, places);
        std::optional<bool> told;
        fresh.StartService(0, {.start = [] {},
                               .stop = [&](bool ending) { told = ending; },
                               .pause = {},
                               .resume = {}});
        raise(SIGINT);
        ASSERT_TRUE(RunUntil(own_loop, [&] { return told.has_value(); }));
        EXPECT_EQ(*told, row.ending) << row.state;
    }
}

// A datagram socket of the local machine, as a service manager has it.
class NotifySocket {
  public:
    explicit NotifySocket(std::string name) : fd_(socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy(name.begin(), name.end(), address.sun_path);
        if (name[0] == '@')
            address.sun_path[0] = '\0';
        bind(fd_.Get(), reinterpret_cast<sockaddr*>(&address),
             static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size()));
        setenv("NOTIFY_SOCKET", name.c_str(), 1);
    }
    ~NotifySocket() { unsetenv("NOTIFY_SOCKET"); }
    std::string Receive() const {
        char text[100];
        const ssize_t size = recv(fd_.Get(), text, sizeof text, 0);
        return {text, static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
    }

  private:
    UniqueFd fd_;
};

TEST_F(Systemd, ReadinessGoesToTheSocketOfTheServiceManager) {
    controller.ReportReady(); // nobody wants to know
    for (const std::string& name :
         {folder.Path("notify"), "@tarnex-test-" + std::to_string(getpid())}) {
        const NotifySocket manager(name);
        controller.ReportReady();
        EXPECT_EQ(manager.Receive(), "READY=1") << name;
    }
    setenv("NOTIFY_SOCKET", folder.Path("gone").c_str(), 1);
    controller.ReportReady();
    setenv("NOTIFY_SOCKET", std::string(200, 'x').c_str(), 1);
    controller.ReportReady();
    unsetenv("NOTIFY_SOCKET");
}

struct Watchdog : Systemd {
    const NotifySocket manager{folder.Path("notify")};
    SimulatedClock clock;

    ~Watchdog() override {
        unsetenv("WATCHDOG_USEC");
        unsetenv("WATCHDOG_PID");
    }
    static void Watch(const std::string& microseconds, pid_t process) {
        setenv("WATCHDOG_USEC", microseconds.c_str(), 1);
        setenv("WATCHDOG_PID", std::to_string(process).c_str(), 1);
    }
};

TEST_F(Watchdog, IsFedTwiceInItsTime) {
    Watch("60000000", getpid());
    SystemdController watched(clock, loop, places);
    watched.StartService(0, {.start = [] {}, .stop = {}, .pause = {}, .resume = {}});
    for (int i = 0; i < 3; ++i) {
        clock.RunFor(29999ms);
        EXPECT_EQ(manager.Receive(), "");
        clock.RunFor(1ms);
        EXPECT_EQ(manager.Receive(), "WATCHDOG=1");
    }
}

TEST_F(Watchdog, WithoutOneNobodyIsTold) {
    struct Row {
        const char* microseconds;
        pid_t process;
    };
    for (const Row& row : {Row{"60000000", getppid()}, Row{"soon", getpid()}, Row{"-5", getpid()},
                           Row{"0", getpid()}}) {
        Watch(row.microseconds, row.process);
        SystemdController unwatched(clock, loop, places);
        unwatched.StartService(0, {.start = [] {}, .stop = {}, .pause = {}, .resume = {}});
        clock.RunFor(1h);
        EXPECT_EQ(manager.Receive(), "") << row.microseconds;
    }
}

} // namespace
} // namespace tarnex
