#include "simulator/unit_commands.h"
#include "tests/world.h"

namespace tarnex {
namespace {

using namespace std::string_literals;

struct SimulatedUnitTest : WorldTest {
    SimulatedUnitTest() {
        ports.Plug(1, unit);
        Open(19200, 'N');
    }
    void Open(int baud, char parity) {
        port.reset();
        port = ports.Open(1, {.baud = baud, .parity = parity}, {[] {}, [] {}}).port;
    }
    std::string Hear(Duration duration) {
        clock.RunFor(duration);
        return port->Read(1024);
    }
    std::string Ask(const std::string& bytes, Duration duration = 2s) {
        port->Write(bytes);
        return Hear(duration);
    }
    // What the unit says at once to an operator's command.
    std::string Run(std::string_view line) {
        EXPECT_EQ(commands.Run(line), "") << line;
        return Hear(0ms);
    }

    std::unique_ptr<SerialPort> port;
    std::string hosted;
    UnitCommands commands{unit,
                          {[&] { return hosted += "plug;", ""; },
                           [&] { return hosted += "unplug;", ""; }, [&] { hosted += "quit;"; },
                           [&](const std::string& line) { hosted += line + ";"; }}};
};

TEST_F(SimulatedUnitTest, CommandsMayComeInPiecesOrTogether) {
    EXPECT_EQ(Ask("\xFFnoise\r\n~TX:RDN"), "");
    EXPECT_EQ(Ask("O1\r"), "");
    EXPECT_EQ(Ask("\n~TX:RDNO2\r\n"), "TX:NO1(13900000001)\r\nTX:NO2(13900000002)\r\n");
    EXPECT_EQ(Ask("~TX:WRDT(24 (1))\r\n~TX:RDDT\r\n"), "TX:OK\r\nTX:DT(24 (1))\r\n");
    EXPECT_EQ(Ask("~TX:RDNO1(x)\r\n~TX:WRNO1\r\n"), "TX:ERROR\r\nTX:ERROR\r\n");
}

TEST_F(SimulatedUnitTest, AnSmsHasTheOutcomeThatHeldWhenItWasAccepted) {
    EXPECT_EQ(Ask("~TX:SENDSMS1(4E2D)\r\n"), "TX:OK\r\n");
    unit.Outcome = SmsOutcome::kFailed;
    EXPECT_EQ(Hear(1min), "TX:SENDOK\r\n");
    unit.Outcome = SmsOutcome::kSent;
    unit.Memory.Number2.clear(); // nobody to send it to
    EXPECT_EQ(Ask("~TX:SENDSMS2(4E2D)\r\n", 1min), "TX:OK\r\nTX:SENDFAIL\r\n");
}

TEST_F(SimulatedUnitTest, DoesWhatItsOperatorSays) {
    EXPECT_EQ(Run("  ac lost\r"), "TX:Alarm(AC)\r\n");
    EXPECT_EQ(Run("ac  ok"), "TX:Alarm(ACOK)\r\n");
    EXPECT_EQ(Run("con"), "TX:Alarm(CON)\r\n");
    EXPECT_EQ(Run("nocard"), "TX:NOSimCard\r\n");
    EXPECT_EQ(Run("sms 139 余额  5"), "TX:SMRCV(REC UNREAD,\"003100330039\",,"
                                      "\"24/05/06,08:00:00+32\",4F59989D002000200035,0,OK)\r\n");
    for (const char* silent : {"", "# ac lost", "plug", "unplug", "quit"})
        EXPECT_EQ(Run(silent), "");
    EXPECT_EQ(hosted, "plug;unplug;quit;");
    Run("csq 7");
    EXPECT_EQ(Ask("~TX:RDCSQ\r\n"), "TX:TXCSQ(7,0)\r\n");
    Run("send fail");
    EXPECT_EQ(unit.Outcome, SmsOutcome::kFailed);
    Run("loader write:100 silent");
    Run("loader deaf");
    EXPECT_TRUE(unit.Loader().Deaf);
    Run("loader ok");
    EXPECT_FALSE(unit.Loader().Deaf);
    Run("silent on");
    EXPECT_NE(commands.Run("sms 139 x"), "");
    Run("silent off");
    Run("reboot");
    EXPECT_TRUE(unit.Booting());
}

TEST_F(SimulatedUnitTest, BadCommandsAreRefusedBeforeAnythingHappens) {
    for (const char* line :
         {"ac", "ac on", "sms 139", "csq", "csq 100", "csq -1", "csq 7x", "reboot now", "send",
          "bark", "AC lost", "loader", "loader write", "loader write:0 late", "loader write:x late",
          "loader read late", "loader write late now"}) {
        EXPECT_NE(UnitCommands::Check(line), "") << line;
        EXPECT_EQ(commands.Run(line), UnitCommands::Check(line));
    }
    EXPECT_EQ(unit.Signal, 20);
    EXPECT_EQ(Hear(0ms), "");
}

TEST(UnitScript, GivesStepsOrTheFirstBadLine) {
    auto good = ParseUnitScript("# a day\n\n0 csq 5\r\n  2.5  sms 1 # no comment\n7 quit");
    const std::vector<ScriptStep>& steps = *good;
    ASSERT_EQ(steps.size(), 3u);
    EXPECT_EQ(steps[1].at, 2500ms);
    EXPECT_EQ(steps[1].command, "sms 1 # no comment");

    for (const auto& [script, trouble] : {
             std::pair{"0 con\nac lost\n", "line 2: expected SECONDS COMMAND"},
             {"\n-1 con", "line 2: expected SECONDS COMMAND"},
             {"nan con", "line 1: expected SECONDS COMMAND"},
             {"5", "line 1: no command behind the seconds"},
             {"5 ac", "line 1: ac: expected \"lost\" or \"ok\""},
         })
        EXPECT_EQ(ParseUnitScript(script).TroubleText(), trouble);
}

const std::string kHandshake = "\x5A\xA5\x00\x08\xB0\x01\xB7\x16"s;
const std::string kErase = "\x5A\xA5\x00\x08\xB2\x01\xB9\x16"s;
const std::string kWrite = "\x5A\xA5\x00\x10\xB3\x00\x00\xFF\xFF\x00\x02\xAB\xCD\x05\x3A\x16"s;
const std::string kWritten = "\x5A\xA5\x00\x0A\xB3\x01\x78"s; // two bytes of the unit's own follow

// What an update that goes as it should never meets.
TEST_F(SimulatedUnitTest, TheLoaderTakesWholeFramesAndKeepsAnErasedUnit) {
    unit.Boot();
    Open(38400, 'N');
    EXPECT_EQ(Ask(kHandshake, 0ms), "");
    Open(38400, 'E');
    EXPECT_EQ(Ask(kErase), ""); // nothing but a handshake wakes it
    EXPECT_EQ(Ask(kHandshake), kHandshake);
    EXPECT_NE(Ask(kWrite).substr(0, 7), kWritten); // not erased yet
    EXPECT_EQ(Ask(kErase), kHandshake);
    EXPECT_EQ(Ask("\x5A\x01" + kWrite.substr(0, 5), 10ms), "");
    EXPECT_EQ(Ask(kWrite.substr(5)).substr(0, 7), kWritten);
    std::string bad_sum = kWrite;
    bad_sum[12] = '\0';
    EXPECT_NE(Ask(bad_sum).substr(0, 7), kWritten);
    EXPECT_EQ(unit.Loader().Program().size(), 0x10000u);
    EXPECT_EQ(unit.Loader().Program()[0], '\xCD');

    unit.Boot(); // no way out but another update
    Open(19200, 'N');
    EXPECT_EQ(Ask("~TX:Hello,tarnex\r\n", 1h), "");
}

} // namespace
} // namespace tarnex
