#include "device/hex_summary.h"
#include "simulator/simulated_unit.h"
#include "tests/device/device_fixture.h"

namespace tarnex {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kHandshake = "\x5A\xA5\x00\x08\xB0\x01\xB7\x16"sv;
constexpr std::string_view kErase = "\x5A\xA5\x00\x08\xB2\x01\xB9\x16"sv;

// Two bytes at 0100 and two at 0102.
constexpr char kFile[] = ":020100000102FA\r\n:020102000304F4\r\n:00000001FF\r\n";

class FirmwareTest : public DeviceTest {
  protected:
    FirmwareTest() {
        ports.Plug(7, unit);
        core.firmware.SetDisplay(
            {.List1Additem = [this](const Text& line) { told.push_back(line); },
             .show_address = [this] { told.push_back(u"(address)"); }});
    }
    ~FirmwareTest() override { ports.Unplug(7); }
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
    HexProgram Program() const {
        SimulatedLineFiles files;
        files.Files["unit.hex"] = hex_file;
        return HexSummary::Read(*files.Open("unit.hex").file).TakeProgram();
    }
    const FlashProgress& Progress() const { return core.firmware.Progress(); }

    SimulatedUnit unit{clock};
    std::string hex_file = kFile;
    std::vector<Text> told;
    Duration took{};
};

TEST_F(FirmwareTest, GoesThroughItsStepsFrameByFrame) {
    lists.DebugOn = core.OCXDebug(u"On");
    ASSERT_TRUE(Flash());
    std::string wire;
    wire.append(kHandshake).append(kHandshake).append(kHandshake).append(kErase);
    wire += "\x5A\xA5\x00\x10\xB3\x00\x00\x01\x00\x00\x02\x01\x02\x01\xC8\x16"sv;
    wire += "\x5A\xA5\x00\x10\xB3\x00\x00\x01\x02\x00\x02\x03\x04\x01\xCE\x16"sv;
    wire += kErase;
    EXPECT_EQ(ports.Written(7), wire); // no further handshake, though erasing takes a second
    EXPECT_EQ(told,
              (std::vector<Text>{u"打开HEX文件", u"用升级模式打开Com7", u"开始握手",
                                 u"握手成功，开始擦除。", u"擦除成功，开始写入。", u"(address)"}));
    EXPECT_EQ(window.lines[List::kDevice], (std::vector<Text>{u"Flash写入正常!"}));
    EXPECT_EQ(unit.Loader().Program().substr(0xFF, 6), "\xFF\x01\x02\x03\x04\xFF");
    EXPECT_EQ(core.firmware.HEXWriteAddr(), u"0102");
    EXPECT_EQ(Progress().step, FlashStep::kDone);
    EXPECT_EQ(Progress().records, 2);
    EXPECT_EQ(Progress().bytes, 4);
    EXPECT_EQ(unit.Memory.Version, "TARNEX-SIM 1.0");
}

TEST_F(FirmwareTest, TheLineIsTheLoadersAndTheUnitBootsWithTheNewVersion) {
    hex_file = ":0C00000056455253494F4E3D4E45575F48\n"
               ":07000C00322E302D313700C8\n:00000001FF\n";
    unit.Boot();
    Running<bool> flash(clock, core.firmware.FirmwareFlash(7, Program()));
    const LineSettings line = ports.OpenSettings(7).value();
    EXPECT_EQ(line.baud, 38400);
    EXPECT_EQ(line.parity, 'E');
    EXPECT_EQ(line.data_bits, 8);
    EXPECT_EQ(line.stop_bits, 1);
    clock.RunFor(1min);
    EXPECT_EQ(flash.result, true);
    EXPECT_EQ(unit.Memory.Version, "NEW_2.0-17");
    EXPECT_FALSE(unit.Booting());
    Running<int> connect(clock, core.discovery.Connect(Discovery::Ports::kAll));
    clock.RunFor(1s);
    EXPECT_EQ(connect.result, 7);
}

TEST_F(FirmwareTest, OnlyTheEndRecordIsAlsoAnUpdate) {
    hex_file = ":00000001FF";
    ASSERT_TRUE(Flash());
    EXPECT_EQ(ports.Written(7).size(), 5 * kErase.size());
    EXPECT_EQ(Progress().records, 0);
}

struct FaultRow {
    LoaderPlan plan;
    FlashStep step;
    FlashFault fault;
    std::size_t answered; // bytes
};

TEST_F(FirmwareTest, AFaultAtAnyStepEndsInFailureAndTheNextUpdateSucceeds) {
    using enum LoaderStep;
    using enum LoaderFault;
    // clang-format off
    const FaultRow rows[] = {
        {{kHandshake, 1, kRefuse},  FlashStep::kHandshake, FlashFault::kWrongAnswer, 5},
        {{kHandshake, 2, kCorrupt}, FlashStep::kHandshake, FlashFault::kWrongAnswer, 6},
        {{kHandshake, 3, kWrong},   FlashStep::kHandshake, FlashFault::kWrongAnswer, 4},
        {{kHandshake, 3, kSilent},  FlashStep::kHandshake, FlashFault::kSilence,     0},
        {{kErase, 1, kRefuse},      FlashStep::kErase,     FlashFault::kWrongAnswer, 5},
        {{kErase, 1, kCorrupt},     FlashStep::kErase,     FlashFault::kWrongAnswer, 6},
        {{kErase, 1, kWrong},       FlashStep::kErase,     FlashFault::kWrongAnswer, 4},
        {{kErase, 1, kLate},        FlashStep::kErase,     FlashFault::kSilence,     0},
        {{kErase, 1, kSilent},      FlashStep::kErase,     FlashFault::kSilence,     0},
        {{kWrite, 2, kRefuse},      FlashStep::kWrite,     FlashFault::kWrongAnswer, 4},
        {{kWrite, 2, kCorrupt},     FlashStep::kWrite,     FlashFault::kWrongAnswer, 10},
        {{kWrite, 2, kWrong},       FlashStep::kWrite,     FlashFault::kWrongAnswer, 4},
        {{kWrite, 2, kLate},        FlashStep::kWrite,     FlashFault::kSilence,     0},
        {{kWrite, 2, kSilent},      FlashStep::kWrite,     FlashFault::kSilence,     0},
    };
    // clang-format on
    lists.DebugOn = core.OCXDebug(u"On");
    for (const FaultRow& row : rows) {
        SCOPED_TRACE(testing::Message()
                     << "step " << int(row.plan.step) << " fault " << int(row.plan.fault));
        unit.Loader().SetPlan(row.plan);
        EXPECT_FALSE(Flash());
        EXPECT_EQ(Progress().step, row.step);
        EXPECT_EQ(Progress().fault, row.fault);
        EXPECT_EQ(Progress().answer.size(), row.answered);
        EXPECT_EQ(window.lines[List::kDevice].back(), u"Flash写入错误!");
        EXPECT_EQ(told.back() == u"擦除失败。", row.step == FlashStep::kErase);
        if (row.step == FlashStep::kWrite) {
            EXPECT_EQ(core.firmware.HEXWriteAddr(), u"0102");
            EXPECT_EQ(Progress().line, 2);
            EXPECT_EQ(Progress().records, 1);
        }
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
    EXPECT_FALSE(unit.Booting()); // it has started as usual meanwhile
}

TEST_F(FirmwareTest, NoiseIsNoAcknowledgement) {
    unit.Loader().Deaf = true;
    clock.CallAfter(1s, [this] { unit.SendNoise(); });
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

TEST_F(FirmwareTest, BytesThatDoNotLeaveEndIt) {
    ports.HoldOutput(7, true);
    EXPECT_FALSE(Flash());
    EXPECT_EQ(Progress().fault, FlashFault::kStuckLine);
    EXPECT_EQ(took, 2s);
}

TEST_F(FirmwareTest, APortThatCannotBeOpenedEndsItAtOnce) {
    EXPECT_FALSE(Flash(0));
    EXPECT_EQ(Progress().port_status, PortStatus::kAbsent);
    ports.SetStatus(7, PortStatus::kBusy);
    EXPECT_FALSE(Flash());
    EXPECT_EQ(Progress().fault, FlashFault::kNoPort);
    EXPECT_EQ(Progress().port_status, PortStatus::kBusy);
    EXPECT_EQ(took, 0ms);
}

TEST_F(FirmwareTest, CancelledItLeavesNothingOpen) {
    for (const Duration when : {100ms, 500ms, 1020ms}) {
        unit.Boot();
        {
            Running<bool> flash(clock, core.firmware.FirmwareFlash(7, Program()));
            clock.RunFor(when);
            EXPECT_FALSE(Closed());
            EXPECT_EQ(flash.result, std::nullopt);
        }
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
