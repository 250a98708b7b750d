#include "simulator/simulated_clock.h"
#include "simulator/simulated_serial.h"
#include "simulator/simulated_unit.h"
#include "simulator/unit_commands.h"
#include "simulator/unit_script.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

class UnitCommandsTest : public testing::Test {
  protected:
    std::string OnTheLine(std::string_view command) {
        EXPECT_EQ(commands.Run(command), "") << command;
        clock.RunFor(0ms);
        return port->Read(1024);
    }

    SimulatedClock clock;
    SimulatedSerialPorts ports{clock};
    SimulatedUnit unit{clock};
    std::string hosted;
    UnitCommands commands{unit,
                          {[&] { return hosted += "plug;", ""; },
                           [&] { return hosted += "unplug;", ""; }, [&] { hosted += "quit;"; },
                           [&](const std::string& line) { hosted += line + ";"; }}};
    std::unique_ptr<SerialPort> port = [&] {
        ports.Plug(1, unit);
        return ports.Open(1, {}, {[] {}, [] {}}).port;
    }();
};

TEST_F(UnitCommandsTest, DoWhatTheySay) {
    EXPECT_EQ(OnTheLine("  ac lost\r"), "TX:Alarm(AC)\r\n");
    EXPECT_EQ(OnTheLine("ac  ok"), "TX:Alarm(ACOK)\r\n");
    EXPECT_EQ(OnTheLine("con"), "TX:Alarm(CON)\r\n");
    EXPECT_EQ(OnTheLine("nocard"), "TX:NOSimCard\r\n");
    EXPECT_EQ(OnTheLine("sms 139 余额  5"), "TX:SMRCV(REC UNREAD,\"003100330039\",,"
                                            "\"24/05/06,08:00:00+32\","
                                            "4F59989D002000200035,0,OK)\r\n");
    EXPECT_EQ(OnTheLine(""), "");
    EXPECT_EQ(OnTheLine("# ac lost"), "");
    commands.Run("csq 7");
    EXPECT_EQ(unit.Signal, 7);
    commands.Run("send fail");
    EXPECT_EQ(unit.Outcome, SmsOutcome::kFailed);
    EXPECT_EQ(commands.Run("loader write:100 silent"), "");
    EXPECT_EQ(commands.Run("loader deaf"), "");
    EXPECT_TRUE(unit.Loader().Deaf);
    EXPECT_EQ(commands.Run("loader ok"), "");
    EXPECT_FALSE(unit.Loader().Deaf);
    commands.Run("plug");
    commands.Run("unplug");
    commands.Run("quit");
    EXPECT_EQ(hosted, "plug;unplug;quit;");
    commands.Run("silent on");
    EXPECT_NE(commands.Run("sms 139 x"), "");
    commands.Run("silent off");
    commands.Run("reboot");
    EXPECT_TRUE(unit.Booting());
}

TEST_F(UnitCommandsTest, BadOnesAreRefusedBeforeAnythingHappens) {
    for (const char* line :
         {"ac", "ac on", "sms 139", "csq", "csq 100", "csq -1", "csq 7x", "reboot now", "send",
          "bark", "AC lost", "loader", "loader write", "loader write:0 late", "loader write:x late",
          "loader read late", "loader write late now"}) {
        EXPECT_NE(UnitCommands::Check(line), "") << line;
        EXPECT_EQ(commands.Run(line), UnitCommands::Check(line));
    }
    EXPECT_EQ(unit.Signal, 20);
    EXPECT_EQ(port->InBufferCount(), 0u);
}

TEST(UnitScript, GivesStepsOrTheFirstBadLine) {
    const auto good = ParseUnitScript("# a day\n\n0 csq 5\r\n  2.5  sms 1 # no comment\n7 quit");
    const auto& steps = std::get<std::vector<ScriptStep>>(good);
    ASSERT_EQ(steps.size(), 3u);
    EXPECT_EQ(steps[1].at, 2500ms);
    EXPECT_EQ(steps[1].command, "sms 1 # no comment");
    EXPECT_EQ(steps[2].command, "quit");

    const auto trouble = [](std::string_view script) {
        return std::get<std::string>(ParseUnitScript(script));
    };
    EXPECT_EQ(trouble("0 con\nac lost\n"), "line 2: expected SECONDS COMMAND");
    EXPECT_EQ(trouble("\n-1 con"), "line 2: expected SECONDS COMMAND");
    EXPECT_EQ(trouble("nan con"), "line 1: expected SECONDS COMMAND");
    EXPECT_EQ(trouble("5"), "line 1: no command behind the seconds");
    EXPECT_EQ(trouble("5 ac"), "line 1: ac: expected \"lost\" or \"ok\"");
}

} // namespace
} // namespace tarnex
