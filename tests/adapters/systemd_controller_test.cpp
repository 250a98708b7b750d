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
#include <unistd.h>

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
    EXPECT_EQ(std::filesystem::status(folder.Path(kUnit)).permissions(),
              std::filesystem::perms(0644));

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
    const auto has = [](const std::string& unit, const std::string& line) {
        return unit.find("\n" + line + "\n") != std::string::npos;
    };
    const std::string usual = SystemdUnitText("/opt/alarm 50%/tarnexcomm", true);
    EXPECT_TRUE(has(usual, "ExecStart=\"/opt/alarm 50%%/tarnexcomm\""));
    EXPECT_TRUE(has(usual, "User=tarnexcomm") && has(usual, "ProtectHome=yes"));
    const std::string at_home = SystemdUnitText("/home/anna/bin/tarnexcomm", false);
    EXPECT_TRUE(has(at_home, "ProtectHome=read-only"));
    EXPECT_FALSE(has(at_home, "User=tarnexcomm") || has(at_home, "ProtectHome=yes"));
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

TEST_F(Systemd, SignalsAreTheServiceEventsAndTheStopSaysWhetherTheMachineIsEnding) {
    for (const auto& [state, stop] :
         {std::pair("stopping\n", "END "), {"degraded\n", "stop "}, {"hanging", "stop "}}) {
        folder.Write("state", state);
        std::string told;
        AsioLoop own_loop;
        SystemdController fresh(own_loop, own_loop, places);
        fresh.StartService(2, {.start = [&] { told += "start "; },
                               .stop = [&](bool ending) { told += ending ? "END " : "stop "; },
                               .pause = [&] { told += "pause "; },
                               .resume = [&] { told += "resume "; }});
        EXPECT_EQ(told, "");
        std::string expected = "start ";
        ASSERT_TRUE(RunUntil(own_loop, [&] { return told == expected; }));
        for (const auto& [signal, event] :
             {std::pair(SIGUSR1, "pause "), {SIGUSR2, "resume "}, {SIGINT, stop}}) {
            raise(signal);
            expected += event;
            ASSERT_TRUE(RunUntil(own_loop, [&] { return told == expected; })) << told;
        }
        raise(SIGTERM); // it is ending already
        RunUntil(
            own_loop, [] { return false; }, 30ms);
        EXPECT_EQ(told, expected);
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

TEST_F(Systemd, TheWatchdogOfThisProcessIsFedTwiceInItsTime) {
    const NotifySocket manager(folder.Path("notify"));
    setenv("WATCHDOG_USEC", "60000000", 1);
    for (const pid_t watched : {getpid(), getppid()}) {
        setenv("WATCHDOG_PID", std::to_string(watched).c_str(), 1);
        SimulatedClock clock;
        SystemdController fed(clock, loop, places);
        fed.StartService(0, {.start = [] {}, .stop = {}, .pause = {}, .resume = {}});
        for (int i = 0; i < 3; ++i) {
            clock.RunFor(29999ms);
            EXPECT_EQ(manager.Receive(), "");
            clock.RunFor(1ms);
            EXPECT_EQ(manager.Receive(), watched == getpid() ? "WATCHDOG=1" : "");
        }
    }
    unsetenv("WATCHDOG_USEC");
    unsetenv("WATCHDOG_PID");
}

} // namespace
} // namespace tarnex
