#include "device/intel_hex.h"
#include "tests/device/device_fixture.h"

namespace tarnex {
namespace {

using namespace std::string_view_literals;

const std::string kHandshake("\x5A\xA5\x00\x08\xB0\x01\xB7\x16", 8);
const std::string kErase("\x5A\xA5\x00\x08\xB2\x01\xB9\x16", 8);

// Two bytes at 0100 and two at 0102.
constexpr char kFile[] = ":020100000102FA\r\n:020102000304F4\r\n:00000001FF\r\n";

using Texts = std::vector<Text>;

struct FirmwareTest : DeviceTest {
    FirmwareTest() {
        ports.Plug(7, unit);
        core.firmware.OnStep([this](const Text& line) { told.push_back(line); });
    }
    // Restarts the unit and runs an update to its end.
    bool Flash(int port = 7) {
        unit.Boot();
        told.clear();
        ports.ForgetWritten(7);
        start = clock.Now();
        Running<bool> flash(clock, core.firmware.FirmwareFlash(port, Program()));
        EXPECT_TRUE(clock.RunUntil([&] { return flash.result.has_value(); }, 5min));
        took = flash.ended - start;
        EXPECT_TRUE(Closed());
        return flash.result.value_or(false);
    }
    bool Closed() const {
        return !ports.OpenSettings(7) && !core.firmware.FirmMode() &&
               !core.firmware.FirmComTimer.Enabled();
    }
    HexProgram Program() {
        files.Files["unit.hex"] = hex_file;
        return HexSummary::Read(**files.Open("unit.hex")).TakeProgram();
    }
    const FlashProgress& Progress() const { return core.firmware.Progress(); }

    std::string hex_file = kFile;
    std::vector<Text> told;
    Duration took{};
};

TEST_F(FirmwareTest, GoesThroughItsStepsFrameByFrame) {
    lists.DebugOn = core.OCXDebug(u"On");
    ASSERT_TRUE(Flash());
    std::string wire = kHandshake + kHandshake + kHandshake + kErase;
    wire += "\x5A\xA5\x00\x10\xB3\x00\x00\x01\x00\x00\x02\x01\x02\x01\xC8\x16"sv;
    wire += "\x5A\xA5\x00\x10\xB3\x00\x00\x01\x02\x00\x02\x03\x04\x01\xCE\x16"sv;
    wire += kErase;
    EXPECT_EQ(ports.Written(7), wire); // no further handshake, though erasing takes a second
    EXPECT_EQ(told, (Texts{u"打开HEX文件", u"用升级模式打开Com7", u"开始握手",
                           u"握手成功，开始擦除。", u"擦除成功，开始写入。"}));
    EXPECT_EQ(window.lines[List::kDevice], Texts{u"Flash写入正常!"});
    EXPECT_EQ(unit.Loader().Program().substr(0xFF, 6), "\xFF\x01\x02\x03\x04\xFF");
    EXPECT_EQ(core.firmware.HEXWriteAddr(), u"0102");
    EXPECT_EQ(Progress().step, FlashStep::kDone);
    EXPECT_EQ(Progress().records, 2);
    EXPECT_EQ(Progress().bytes, 4);
    EXPECT_EQ(unit.Memory.Version, "TARNEX-SIM 1.0");

    hex_file = ":00000001FF"; // also an update
    ASSERT_TRUE(Flash());
    EXPECT_EQ(ports.Written(7).size(), 5 * kErase.size());
    EXPECT_EQ(Progress().records, 0);
}

TEST_F(FirmwareTest, TheLineIsTheLoadersAndTheUnitBootsWithTheNewVersion) {
    hex_file = ":0C00000056455253494F4E3D4E45575F48\n"
               ":07000C00322E302D313700C8\n:00000001FF\n";
    LineSettings line;
    clock.CallAfter(1s, [&] { line = ports.OpenSettings(7).value(); });
    ASSERT_TRUE(Flash());
    EXPECT_EQ(std::tuple(line.baud, line.parity, line.data_bits, line.stop_bits),
              std::tuple(38400, 'E', 8, 1));
    clock.RunFor(10s);
    EXPECT_EQ(unit.Memory.Version, "NEW_2.0-17");
    EXPECT_EQ(Connect(), 7);
}

TEST_F(FirmwareTest, AFaultAtAnyStepEndsInFailureAndTheNextUpdateSucceeds) {
    using enum LoaderStep;
    using enum LoaderFault;
    const struct {
        LoaderPlan plan;
        FlashStep step;
        std::size_t answered; // bytes
    } rows[] = {
        {{kHandshake, 1, kRefuse}, FlashStep::kHandshake, 5},
        {{kHandshake, 2, kCorrupt}, FlashStep::kHandshake, 6},
        {{kHandshake, 3, kWrong}, FlashStep::kHandshake, 4},
        {{kHandshake, 3, kSilent}, FlashStep::kHandshake, 0},
        {{kErase, 1, kRefuse}, FlashStep::kErase, 5},
        {{kErase, 1, kLate}, FlashStep::kErase, 0},
        {{kErase, 1, kSilent}, FlashStep::kErase, 0},
        {{kWrite, 2, kRefuse}, FlashStep::kWrite, 4},
        {{kWrite, 2, kCorrupt}, FlashStep::kWrite, 10},
        {{kWrite, 2, kLate}, FlashStep::kWrite, 0},
    };
    lists.DebugOn = core.OCXDebug(u"On");
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        unit.Loader().SetPlan(row.plan);
        EXPECT_FALSE(Flash());
        EXPECT_EQ(Progress().step, row.step);
        EXPECT_EQ(Progress().fault,
                  row.answered == 0 ? FlashFault::kSilence : FlashFault::kWrongAnswer);
        EXPECT_EQ(Progress().answer.size(), row.answered);
        EXPECT_EQ(window.lines[List::kDevice].back(), u"Flash写入错误!");
        EXPECT_EQ(told.back() == u"擦除失败。", row.step == FlashStep::kErase);
        const bool writing = row.step == FlashStep::kWrite;
        EXPECT_EQ(core.firmware.HEXWriteAddr(), writing ? u"0102" : u"");
        EXPECT_EQ(Progress().line, writing ? 2 : 0);
        EXPECT_EQ(Progress().records, writing ? 1 : 0);
        clock.RunFor(30s); // the unit gives its loader up
        EXPECT_TRUE(Flash());
    }
}

TEST_F(FirmwareTest, AByteMayComeEightSecondsLate) {
    unit.Times.Erase = 7999ms;
    EXPECT_TRUE(Flash());
    unit.Times.Erase = 8s; // the time-out was asked for first
    EXPECT_FALSE(Flash());
    EXPECT_EQ(Progress().fault, FlashFault::kSilence);
}

TEST_F(FirmwareTest, CallsASilentLoaderFiveHundredTimes) {
    unit.Loader().Deaf = true;
    EXPECT_FALSE(Flash());
    EXPECT_EQ(took, 500 * 200ms);
    EXPECT_EQ(ports.Written(7).size(), 500 * kHandshake.size());
    EXPECT_EQ(Progress().fault, FlashFault::kNoLoader);

    clock.CallAfter(1s, [this] { unit.SendNoise(); }); // no acknowledgement
    EXPECT_FALSE(Flash());
    EXPECT_EQ(took, 1200ms);
    EXPECT_EQ(Progress().fault, FlashFault::kWrongAnswer);
    EXPECT_EQ(Progress().answer, "\x81");
}

TEST_F(FirmwareTest, APulledAdapterEndsItAtOnceAtEveryStep) {
    for (const Duration pulled : {0ms, 3ms, 500ms, 1017ms}) {
        clock.CallAfter(pulled, [this] { ports.Unplug(7); });
        EXPECT_FALSE(Flash());
        EXPECT_LE(took, pulled + 200ms);
        EXPECT_EQ(Progress().fault, FlashFault::kLineLost) << pulled.count();
        EXPECT_EQ(losses, 0); // nobody searches for the unit in the middle of an update
        ports.Plug(7, unit);
    }
    EXPECT_EQ(Progress().step, FlashStep::kWrite);
    EXPECT_FALSE(unit.Loader().HasProgram());
    EXPECT_TRUE(Flash());
}

TEST_F(FirmwareTest, APortThatCannotBeUsedEndsIt) {
    ports.HoldOutput(7, true);
    EXPECT_FALSE(Flash());
    EXPECT_EQ(Progress().fault, FlashFault::kStuckLine);
    EXPECT_EQ(took, 2s);
    EXPECT_FALSE(Flash(0));
    EXPECT_EQ(Progress().port_status, PortStatus::kAbsent);
    ports.SetStatus(7, PortStatus::kBusy);
    EXPECT_FALSE(Flash());
    EXPECT_EQ(Progress().fault, FlashFault::kNoPort);
    EXPECT_EQ(Progress().port_status, PortStatus::kBusy);
    EXPECT_EQ(Progress().step, FlashStep::kOpenPort);
    EXPECT_EQ(took, 0ms);
}

TEST_F(FirmwareTest, CancelledItLeavesNothingOpen) {
    for (const Duration when : {100ms, 500ms, 1020ms}) {
        unit.Boot();
        EXPECT_FALSE(Within(when, core.firmware.FirmwareFlash(7, Program())));
        EXPECT_TRUE(Closed());
        clock.RunFor(1min);
    }
}

// The text reader keeps its hands off the loader's bytes, also where it had begun before.
TEST_F(FirmwareTest, TextThatArrivedJustBeforeDoesNotDisturbIt) {
    ports.Unplug(7);
    Open(7);
    device.SendAfter(0ms, "TX:TXCSQ(17,0)\r\nTX:NOSimCard\r\nTX:NOSimCard\r\n");
    clock.RunFor(10ms);
    core.discovery.ConnectClose();
    ports.Unplug(7);
    ports.Plug(7, unit);
    unit.Times.Answer = 2ms;
    EXPECT_TRUE(Flash());
}

} // namespace
} // namespace tarnex
