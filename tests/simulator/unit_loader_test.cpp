#include "simulator/simulated_clock.h"
#include "simulator/simulated_serial.h"
#include "simulator/simulated_unit.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

using namespace std::string_literals;

const std::string kHandshake = "\x5A\xA5\x00\x08\xB0\x01\xB7\x16"s;
const std::string kErase = "\x5A\xA5\x00\x08\xB2\x01\xB9\x16"s;
const std::string kWrite = "\x5A\xA5\x00\x10\xB3\x00\x00\xFF\xFF\x00\x02\xAB\xCD\x05\x3A\x16"s;
const std::string kWriteAck = "\x5A\xA5\x00\x0A\xB3\x01\x78"s; // two bytes of the unit's own follow

class UnitLoaderTest : public testing::Test {
  protected:
    void OpenAt(int baud, char parity) {
        port.reset();
        port = ports.Open(1, {.baud = baud, .parity = parity}, {[] {}, [] {}}).port;
    }
    std::string Ask(const std::string& bytes, Duration duration = 2s) {
        port->Write(bytes);
        clock.RunFor(duration);
        return port->Read(1024);
    }
    void EnterLoader() {
        unit.Boot();
        OpenAt(38400, 'E');
        ASSERT_EQ(Ask(kHandshake), kHandshake);
    }

    SimulatedClock clock;
    SimulatedSerialPorts ports{clock};
    SimulatedUnit unit{clock};
    std::unique_ptr<SerialPort> port = [&] {
        ports.Plug(1, unit);
        return ports.Open(1, {}, {[] {}, [] {}}).port;
    }();
};

TEST_F(UnitLoaderTest, ListensAfterARestartForAWhileAtItsOwnSettingsOnly) {
    port->Write("~TX:RESET\r\n");
    clock.RunFor(100ms);
    OpenAt(38400, 'N');
    EXPECT_EQ(Ask(kHandshake), "");
    OpenAt(38400, 'E');
    EXPECT_EQ(Ask(kErase), ""); // nothing but a handshake wakes it
    EXPECT_EQ(Ask(kHandshake), kHandshake);

    unit.Boot();
    clock.RunFor(5s);
    EXPECT_EQ(Ask(kHandshake), "");
    clock.RunFor(5s);
    EXPECT_FALSE(unit.Booting());
}

TEST_F(UnitLoaderTest, GivesUpWithoutFramesAndBootsUnlessItHasErased) {
    EnterLoader();
    clock.RunFor(30s);
    EXPECT_FALSE(unit.Booting());
    EnterLoader();
    EXPECT_EQ(Ask(kErase), kHandshake);
    clock.RunFor(1h);
    EXPECT_FALSE(unit.Loader().HasProgram());
    OpenAt(19200, 'N');
    EXPECT_EQ(Ask("~TX:Hello,tarnex\r\n"), "");
    unit.Boot(); // no way out but another update
    clock.RunFor(1h);
    EXPECT_EQ(Ask("~TX:Hello,tarnex\r\n"), "");
    OpenAt(38400, 'E');
    EXPECT_EQ(Ask(kHandshake), kHandshake);
    EXPECT_EQ(Ask(kErase), kHandshake);
    EXPECT_EQ(Ask(kErase), kHandshake);
    OpenAt(19200, 'N');
    EXPECT_EQ(Ask("", 20s), "TX:InitSysOk\r\nTX:InitGsmOk\r\n");
    EXPECT_EQ(Ask("~TX:Hello,tarnex\r\n"), "TX:Hello,sever\r\n");
}

TEST_F(UnitLoaderTest, StoresWholeFramesAndRefusesOthers) {
    EnterLoader();
    EXPECT_NE(Ask(kWrite).substr(0, 7), kWriteAck); // not erased yet
    Ask(kErase);
    EXPECT_EQ(Ask("\x5A\x01" + kWrite.substr(0, 5), 10ms), "");
    EXPECT_EQ(Ask(kWrite.substr(5)).substr(0, 7), kWriteAck);
    EXPECT_EQ(unit.Loader().Program().size(), 0x10000u);
    EXPECT_EQ(unit.Loader().Program()[0xFFFF], '\xAB');
    EXPECT_EQ(unit.Loader().Program()[0], '\xCD');
    std::string bad_sum = kWrite;
    bad_sum[12] = '\0';
    EXPECT_NE(Ask(bad_sum).substr(0, 7), kWriteAck);
    EXPECT_EQ(unit.Loader().Program()[0], '\xCD');
}

} // namespace
} // namespace tarnex
