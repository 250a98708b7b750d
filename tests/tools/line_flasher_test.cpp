#include "platform/exit_status.h"
#include "tests/tools/tool_fixture.h"
#include "tools/line_flasher.h"

namespace tarnex {
namespace {

struct LineFlasherTest : ToolTest {
    LineFlasherTest() { store.SetContent("[TarnexComm]\nLastCom=3\n"); }
    int Update(const std::string& file) {
        said.clear();
        std::optional<int> status;
        LineFlasher flasher(world, output);
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
    bool Said(const std::string& part) const { return said.find(part) != said.npos; }

    std::string said; // a line each
    FlasherOutput output{
        .say = [this](const std::string& line) { said += line + "\n"; },
        .complain = [this](const std::string& line) { said += "! " + line + "\n"; },
        .show_bar = nullptr};
};

TEST_F(LineFlasherTest, SaysWhatIsInAFileAndWritesNothing) {
    LineFlasher flasher(world, output);
    EXPECT_EQ(flasher.Check("new.hex"), kExitDone);
    EXPECT_EQ(said, "new.hex: 1 record, 17 bytes, addresses 0000 to 0010\n"
                    "Estimated time: 1 s on the line, and what the unit needs to erase and to "
                    "write.\nNothing is odd about it.\n");
    files.Files["bad.hex"] = ":0100000055AB\nhello\n";
    EXPECT_EQ(flasher.Check("bad.hex"), kExitData);
    EXPECT_TRUE(Said("line 1 has a wrong checksum; it is sent all the same\n"
                     "line 2 does not begin with \":\"\n"
                     "line 3 is missing: the file ends without the end record :00000001FF\n"
                     "! An update with this file fails."));
    EXPECT_EQ(flasher.Check("none.hex"), kExitNoInput);
    EXPECT_TRUE(Said("! none.hex: no such file or folder\n"));
    clock.RunFor(1min);
    EXPECT_TRUE(heard.empty());
}

TEST_F(LineFlasherTest, UpdatesTheUnitAndShowsItsNewVersion) {
    EXPECT_EQ(Update("new.hex"), kExitDone);
    EXPECT_TRUE(Said("Greeting the unit on COM3 ...\nname     机1\nversion  TARNEX-SIM 1.0\n"
                     "serial   SIM00000001\nRestarting the unit ...\n"
                     "Calling the unit's loader ...\nErasing ...\n  0 %  0/17 bytes\n"
                     "Updated: 17 bytes in 1 s.\nThe unit starts up ...\nversion  NEWER 1.0\n"));
    EXPECT_EQ(Update("long.hex"), kExitDone);
    EXPECT_TRUE(Said(" 52 %  16736/32000 bytes  address 4160  5 s left"));
}

TEST_F(LineFlasherTest, EveryObstacleHasItsStatus) {
    files.Files["bad.hex"] = "hello\n";
    EXPECT_EQ(Update("bad.hex"), kExitData);
    EXPECT_EQ(Update("none.hex"), kExitNoInput);
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
    EXPECT_TRUE(Said("! The unit's program was not touched."));
    unit.Loader().Deaf = false;
    clock.CallAfter(1s, [this] { ports.Unplug(3); });
    EXPECT_EQ(Update("long.hex"), kExitIo);
    ports.Plug(3, unit);
    unit.Loader().SetPlan(LoaderPlan{LoaderStep::kWrite, 1000, LoaderFault::kSilent});
    EXPECT_EQ(Update("long.hex"), kExitWrongAnswer);
    EXPECT_TRUE(Said("! writing at address 3E70 (line 1000 of the file): the unit did not answer "
                     "within 8 seconds; it had sent nothing"));
}

TEST_F(LineFlasherTest, WaitsForAUnitThatStartsUp) {
    for (const auto& [start, status] :
         {std::pair{unit.Times.Boot, kExitDone}, std::pair{Duration(5min), kExitTryLater}}) {
        unit.Times.Boot = start;
        unit.Boot();
        clock.RunFor(6s); // the loader does not listen any more
        EXPECT_EQ(Update("new.hex"), status);
    }
}

TEST_F(LineFlasherTest, AnInterruptIsTakenAtOnceUnlessTheUnitWouldBeLeftBroken) {
    LineFlasher flasher(world, output);
    std::optional<int> status;
    Task<> task = Drive(flasher, "long.hex", status);
    task.Start();
    EXPECT_TRUE(flasher.Interrupt());
    EXPECT_EQ(flasher.BeforeSystemEnd(), "");
    ASSERT_TRUE(clock.RunUntil([&] { return Said("  0 %"); }, 1min));
    EXPECT_NE(flasher.BeforeSystemEnd(), "");
    EXPECT_TRUE(Said("! The system is about to end"));
    EXPECT_FALSE(flasher.Interrupt());
    EXPECT_TRUE(Said("! The unit is being written"));
    clock.RunFor(5001ms);
    EXPECT_FALSE(flasher.Interrupt());
    clock.RunFor(2s);
    EXPECT_TRUE(flasher.Interrupt());
}

} // namespace
} // namespace tarnex
