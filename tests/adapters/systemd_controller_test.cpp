#include "adapters/linux/systemd_controller.h"
#include "tests/adapters/run_until.h"
#include "tests/temp_folder.h"

#include <csignal>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

constexpr const char* kUnit = "tarnexcomm.service";

// Installing with the real systemd, readiness, the watchdog, and the end of the machine: see
// tests/process/systemd_test.py.
struct Systemd : testing::Test {
    TempFolder folder;
    AsioLoop loop;

    Systemd() { folder.Write("mark", ""); }
    // With a program in the place of systemctl, which is only told what to do.
    SystemdPlaces With(const std::string& program) {
        return {.unit_folder = folder.Path(),
                .systemctl = program,
                .running_mark = folder.Path("mark")};
    }
};

TEST_F(Systemd, InstallsAUnitForThisProgramAndTakesItAway) {
    SystemdController controller(loop, loop, With("true"));
    ASSERT_TRUE(controller.Install(true));
    const std::string unit = folder.Read(kUnit);
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    EXPECT_NE(unit.find("\nExecStart=\"" + self + "\"\n"), std::string::npos);
    controller.SaveParameter("TimerInterval", "300");
    controller.SaveParameter("Other", "x");
    controller.SaveParameter("TimerInterval", "200");
    EXPECT_EQ(folder.Read(kUnit), unit + "\n[X-Parameters]\nOther=x\nTimerInterval=200\n");
    EXPECT_TRUE(controller.Uninstall());
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

TEST_F(Systemd, WhatFailsLeavesWhatWasThere) {
    SystemdController controller(loop, loop, With("false"));
    EXPECT_FALSE(controller.Install(true));
    EXPECT_FALSE(folder.Has(kUnit));
    folder.Write(kUnit, "an older unit\n");
    EXPECT_FALSE(controller.Install(true));
    EXPECT_FALSE(controller.Uninstall());
    EXPECT_EQ(folder.Read(kUnit), "an older unit\n");

    std::filesystem::remove(folder.Path("mark")); // another service manager runs the machine
    EXPECT_FALSE(SystemdController(loop, loop, With("true")).Install(true));
    EXPECT_EQ(folder.Read(kUnit), "an older unit\n");
}

TEST_F(Systemd, SignalsAreTheServiceEventsAndAHangingSystemctlDelaysNoStop) {
    std::string told;
    SystemdController controller(loop, loop, With("yes")); // which never ends
    controller.StartService(2, {.start = [&] { told += "start "; },
                                .stop = [&](bool ending) { told += ending ? "END " : "stop "; },
                                .pause = [&] { told += "pause "; },
                                .resume = [&] { told += "resume "; }});
    EXPECT_EQ(told, "");
    std::string expected = "start ";
    ASSERT_TRUE(RunUntil(loop, [&] { return told == expected; }));
    for (const auto& [signal, event] :
         {std::pair(SIGUSR1, "pause "), {SIGUSR2, "resume "}, {SIGINT, "stop "}}) {
        raise(signal);
        expected += event;
        ASSERT_TRUE(RunUntil(loop, [&] { return told == expected; })) << told;
    }
    raise(SIGTERM); // it is ending already
    RunUntil(
        loop, [] { return false; }, 30ms);
    EXPECT_EQ(told, expected);
}

} // namespace
} // namespace tarnex
