#include "tests/device/device_fixture.h"

namespace tarnex {
namespace {

struct DiscoveryTest : DeviceTest {
    DiscoveryTest() { Answer("TX:Hello,sever\r\n"); }
    void Answer(const char* greeting) { device.Replies["~TX:Hello,tarnex\r\n"] = greeting; }
};

TEST_F(DiscoveryTest, TriesThePortsInOrderAndStopsAtTheUnit) {
    ports.SetStatus(2, PortStatus::kOk); // silent
    ports.Plug(5, device);
    EXPECT_EQ(Connect(), 5);
    EXPECT_EQ(ended, 3 * 10ms + 5010ms + 30ms); // three absent, one silent, the unit
    EXPECT_EQ(ports.OpenSettings(5)->baud, 19200);
    EXPECT_EQ(Connect(), 5); // without traffic
    EXPECT_EQ(device.Heard.size(), 1u);
    EXPECT_EQ(core.discovery.ConnectClose(), 5);
    EXPECT_EQ(core.discovery.ConnectClose(), 0);
    EXPECT_EQ(ports.OpenSettings(5), std::nullopt);
    ports.Unplug(5);
    start = clock.Now();
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(SinceStart(ended), 19 * 10ms + 5010ms); // twenty ports
}

TEST_F(DiscoveryTest, LastComNamesTheOnlyPortToTry) {
    ports.Plug(3, device);
    using Row = std::tuple<const char*, int, int>; // what it says, that port, where the unit is
    for (const auto& [number, last, found] : {Row{"1", 1, 0},
                                              {"20", 20, 0},
                                              {"-1", 0, 0},
                                              {"21", 0, 0},
                                              {"3", 3, 3},
                                              {"40000", 0, 3}}) {
        store.SetContent("[TarnexComm]\nLastCom=" + std::string(number) + "\n");
        start = clock.Now();
        EXPECT_EQ(core.discovery.LastPort(), last) << number;
        EXPECT_EQ(Connect(Discovery::Ports::kLast), found) << number;
        EXPECT_EQ(SinceStart(ended), found == 0 ? 10ms : *number == '3' ? 30ms : 50ms) << number;
        core.discovery.ConnectClose();
    }
}

TEST_F(DiscoveryTest, AStartingUnitCountsAsFoundAndAnythingElseDoesNot) {
    ports.Plug(3, device);
    Answer("TX:Init\r\n");
    EXPECT_EQ(Connect(), 3);
    EXPECT_EQ(Within(1s, core.discovery.HelloTarnex()), u"INIT");
    core.discovery.ConnectClose();
    Answer("TX:Hello,server\r\n");
    EXPECT_EQ(Connect(), 0);
}

TEST_F(DiscoveryTest, AnAdapterPulledDuringTheScanOnlyFailsItsPort) {
    ports.SetStatus(4, PortStatus::kOk);
    ports.Plug(6, device);
    clock.CallAfter(2s, [this] { ports.Unplug(4); });
    EXPECT_EQ(Connect(), 6);
    EXPECT_LT(ended, 3s);
    EXPECT_EQ(losses, 0);
}

TEST_F(DiscoveryTest, PortsThatAnOperatorCanFreeAreNamedOnce) {
    ports.SetStatus(2, PortStatus::kForbidden);
    ports.SetStatus(3, PortStatus::kBusy);
    ports.SetStatus(4, PortStatus::kUnusable);
    for (int scan = 0; scan < 3; ++scan)
        Connect();
    ports.SetStatus(2, PortStatus::kOk);
    ports.SetStatus(3, PortStatus::kAbsent);
    Connect();
    ASSERT_EQ(said.size(), 4u);
    EXPECT_NE(said[0].find("COM2 (COM2) may not"), said[0].npos);
    EXPECT_NE(said[1].find("COM3 (COM3) is held"), said[1].npos);
    EXPECT_NE(said[2].find("COM2 (COM2) can be opened now"), said[2].npos);
    EXPECT_NE(said[3].find("COM3 () is no serial line any more"), said[3].npos);
}

} // namespace
} // namespace tarnex
