#include "platform/exit_status.h"
#include "tests/tools/tool_fixture.h"
#include "tools/line_flasher.h"

namespace tarnex {
namespace {

class LineFlasherTest : public ToolTest {
  protected:
    LineFlasherTest() {
        store.SetContent("[TarnexComm]\nLastCom=3\n");
        // 2,000 records of 16 bytes, from address 0 on.
        for (unsigned record = 0; record < 2000; ++record)
            files.Files["long.hex"] += HexLine(record * 16, std::string(16, 'x'));
        files.Files["long.hex"] += ":00000001FF\n";
    }
    int Update(const std::string& file, bool terminal = false) {
        said.clear();
        bars.clear();
        std::optional<int> status;
        LineFlasher flasher(world, Output(terminal));
        Task<> task = Drive(flasher, file, status);
        task.Start();
        EXPECT_TRUE(clock.RunUntil([&] { return status.has_value(); }, 10min));
        return status.value_or(-1);
    }
    static Task<> Drive(LineFlasher& flasher, std::string file, std::optional<int>& status) {
        const std::optional<UpdatePort> last_found; // by the settings
        const int result = co_await flasher.Update(last_found, file);
        status = result;
    }
    FlasherOutput Output(bool terminal) {
        return {.say = [this](const std::string& line) { said.push_back(line); },
                .complain = [this](const std::string& line) { said.push_back("! " + line); },
                .show_bar = [this](const std::string& bar) { bars.push_back(bar); },
                .terminal = terminal};
    }
    bool Said(const std::string& part) const {
        for (const std::string& line : said)
            if (line.find(part) != line.npos)
                return true;
        return false;
    }

    std::vector<std::string> said;
    std::vector<std::string> bars;
};

TEST_F(LineFlasherTest, SaysWhatIsInAFileAndWritesNothing) {
    LineFlasher flasher(world, Output(false));
    EXPECT_EQ(flasher.Check("new.hex"), kExitDone);
    EXPECT_EQ(said, (std::vector<std::string>{
                        "new.hex: 1 record, 17 bytes, addresses 0000 to 0010",
                        "Estimated time: 1 s on the line, and what the unit needs to erase and to "
                        "write.",
                        "Nothing is odd about it."}));
    said.clear();
    files.Files["bad.hex"] = ":0100000055AB\nhello\n";
    EXPECT_EQ(flasher.Check("bad.hex"), kExitData);
    EXPECT_EQ((std::vector<std::string>{said.begin() + 2, said.end()}),
              (std::vector<std::string>{
                  "line 1 has a wrong checksum; it is sent all the same",
                  "line 2 does not begin with \":\"",
                  "line 3 is missing: the file ends without the end record :00000001FF",
                  "! An update with this file fails."}));
    EXPECT_EQ(flasher.Check("none.hex"), kExitNoInput);
    EXPECT_EQ(said.back(), "! none.hex: no such file");
    clock.RunFor(1min);
    EXPECT_TRUE(heard.empty());
}

TEST_F(LineFlasherTest, UpdatesTheUnitAndShowsItsNewVersion) {
    EXPECT_EQ(Update("new.hex"), kExitDone);
    said.erase(said.begin(), said.begin() + 2);
    EXPECT_EQ(said, (std::vector<std::string>{"Greeting the unit on COM3 ...", "name     机1",
                                              "version  TARNEX-SIM 1.0", "serial   SIM00000001",
                                              "Restarting the unit ...",
                                              "Calling the unit's loader ...", "Erasing ...",
                                              "  0 %  0/17 bytes", "Updated: 17 bytes in 1 s.",
                                              "The unit starts up ...", "version  NEWER 1.0"}));
}

TEST_F(LineFlasherTest, ShowsItsProgress) {
    EXPECT_EQ(Update("long.hex"), kExitDone);
    EXPECT_TRUE(Said("  0 %  0/32000 bytes"));
    EXPECT_TRUE(Said(" 52 %  16736/32000 bytes  address 4160  5 s left"));
    EXPECT_TRUE(bars.empty());

    EXPECT_EQ(Update("long.hex", true), kExitDone);
    EXPECT_EQ(bars.back(), "");
    EXPECT_NE(bars.at(bars.size() - 3).find("%  [###"), std::string::npos);
    EXPECT_FALSE(Said("%"));
}

TEST_F(LineFlasherTest, TellsWhereItFailedAndBringsABrokenUnitBack) {
    unit.Loader().SetPlan(LoaderPlan{LoaderStep::kWrite, 1000, LoaderFault::kSilent});
    EXPECT_EQ(Update("long.hex"), kExitWrongAnswer);
    EXPECT_TRUE(Said("! writing at address 3E70 (line 1000 of the file): the unit did not answer "
                     "within 8 seconds; it had sent nothing"));
    EXPECT_TRUE(Said("! The unit's program is incomplete"));
    EXPECT_TRUE(Said("! Bring it back: tarnex-flasher --port COM3 --file long.hex"));
    EXPECT_FALSE(unit.Loader().HasProgram());

    EXPECT_EQ(Update("new.hex"), kExitDone);
    EXPECT_TRUE(Said("It does not answer."));
    EXPECT_TRUE(Said("version  NEWER 1.0"));
}

TEST_F(LineFlasherTest, EveryObstacleHasItsStatus) {
    files.Files["bad.hex"] = "hello\n";
    EXPECT_EQ(Update("bad.hex"), kExitData);
    EXPECT_EQ(Update("none.hex"), kExitNoInput);
    for (const char* port : {"", "0", "21"}) {
        store.SetContent("[TarnexComm]\nLastCom=" + std::string(port));
        EXPECT_EQ(Update("new.hex"), kExitUsage);
    }
    store.SetContent("[TarnexComm]\nLastCom=3");
    lock.HeldByAnother = true;
    EXPECT_EQ(Update("new.hex"), kExitTryLater);
    lock.HeldByAnother = false;
    for (const auto& [port, status] : {std::pair{PortStatus::kAbsent, kExitUnavailable},
                                       std::pair{PortStatus::kForbidden, kExitNoRights},
                                       std::pair{PortStatus::kBusy, kExitTryLater}}) {
        ports.SetStatus(3, port);
        EXPECT_EQ(Update("new.hex"), status);
    }
    ports.SetStatus(3, PortStatus::kOk);
    EXPECT_TRUE(heard.empty()); // so far the unit knows nothing of it

    unit.Loader().Deaf = true;
    EXPECT_EQ(Update("new.hex"), kExitUnavailable);
    EXPECT_TRUE(Said("! calling the unit's loader: the unit did not answer"));
    EXPECT_TRUE(Said("! The unit's program was not touched."));
    unit.Loader().Deaf = false;
    clock.CallAfter(1s, [this] { ports.Unplug(3); });
    EXPECT_EQ(Update("long.hex"), kExitIo);
    EXPECT_TRUE(Said("the serial adapter was unplugged"));
}

TEST_F(LineFlasherTest, WaitsForAUnitThatStartsUp) {
    unit.Boot();
    clock.RunFor(6s); // the loader does not listen any more
    EXPECT_EQ(Update("new.hex"), kExitDone);
    unit.Times.Boot = 5min;
    unit.Boot();
    clock.RunFor(6s);
    EXPECT_EQ(Update("new.hex"), kExitTryLater);
}

TEST_F(LineFlasherTest, AnInterruptIsTakenAtOnceUnlessTheUnitWouldBeLeftBroken) {
    LineFlasher flasher(world, Output(false));
    std::optional<int> status;
    Task<> task = Drive(flasher, "long.hex", status);
    task.Start();
    EXPECT_TRUE(flasher.Interrupt());
    ASSERT_TRUE(clock.RunUntil([&] { return Said("  0 %"); }, 1min));
    EXPECT_FALSE(flasher.Interrupt());
    EXPECT_TRUE(Said("! The unit is being written"));
    clock.RunFor(5001ms);
    EXPECT_FALSE(flasher.Interrupt());
    clock.RunFor(2s);
    EXPECT_TRUE(flasher.Interrupt());
}

} // namespace
} // namespace tarnex
