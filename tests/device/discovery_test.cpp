#include "device/answer_rules.h"
#include "tests/device/device_fixture.h"

namespace tarnex {
namespace {

class DiscoveryTest : public DeviceTest {};

TEST_F(DiscoveryTest, TriesThePortsInOrderAndStopsAtTheUnit) {
    device.Replies["~TX:Hello,tarnex\r\n"] = "TX:Hello,sever\r\n";
    ports.SetStatus(2, PortStatus::kOk); // silent
    ports.Plug(5, device);
    Running<int> connect(clock, core.discovery.Connect(Discovery::Ports::kAll));
    clock.RunFor(1min);
    EXPECT_EQ(connect.result, 5);
    EXPECT_EQ(connect.ended, 3 * 10ms + 5010ms + 30ms); // three absent, one silent, the unit
    EXPECT_TRUE(core.discovery.HelloDone());
    EXPECT_EQ(ports.OpenSettings(5)->baud, 19200);

    Running<int> again(clock, core.discovery.Connect(Discovery::Ports::kAll));
    EXPECT_EQ(again.result, 5); // at once, without traffic
    EXPECT_EQ(device.Heard.size(), 1u);
    EXPECT_EQ(core.discovery.ConnectClose(), 5);
    EXPECT_EQ(core.discovery.ConnectClose(), 0);
    EXPECT_EQ(ports.OpenSettings(5), std::nullopt);
}

TEST_F(DiscoveryTest, TwentySilentPortsTakeAHundredSeconds) {
    for (int number = 1; number <= 20; ++number)
        ports.SetStatus(number, PortStatus::kOk);
    Running<int> connect(clock, core.discovery.Connect(Discovery::Ports::kAll));
    clock.RunFor(2min);
    EXPECT_EQ(connect.result, 0);
    EXPECT_EQ(connect.ended, 20 * 5010ms);
}

TEST_F(DiscoveryTest, LastComNamesTheOnlyPortToTry) {
    ports.Plug(3, device);
    device.Replies["~TX:Hello,tarnex\r\n"] = "TX:Hello,sever\r\n";
    store.SetContent("[TarnexComm]\nLastCom=7\n");
    Running<int> seven(clock, core.discovery.Connect(Discovery::Ports::kLast));
    clock.RunFor(1min);
    EXPECT_EQ(seven.result, 0);
    EXPECT_EQ(seven.ended, 10ms);
    for (const std::string number : {"-1", "21"}) { // there are no such ports
        store.SetContent("[TarnexComm]\nLastCom=" + number + "\n");
        Running<int> none(clock, core.discovery.Connect(Discovery::Ports::kLast));
        clock.RunFor(1min);
        EXPECT_EQ(none.result, 0);
    }
    store.SetContent("[TarnexComm]\nLastCom=abc\n");
    Running<int> all(clock, core.discovery.Connect(Discovery::Ports::kLast));
    clock.RunFor(1min);
    EXPECT_EQ(all.result, 3);
}

TEST_F(DiscoveryTest, AStartingUnitCountsAsFoundAndAnythingElseDoesNot) {
    ports.Plug(3, device);
    device.Replies["~TX:Hello,tarnex\r\n"] = "TX:Init\r\n";
    Running<int> starting(clock, core.discovery.Connect(Discovery::Ports::kAll));
    clock.RunFor(1s);
    EXPECT_EQ(starting.result, 3);
    EXPECT_FALSE(core.discovery.HelloDone());
    Running<Text> hello(clock, core.discovery.HelloTarnex());
    clock.RunFor(1s);
    EXPECT_EQ(hello.result, u"INIT");
    core.discovery.ConnectClose();
    device.Replies["~TX:Hello,tarnex\r\n"] = "TX:Hello,server\r\n";
    Running<int> other(clock, core.discovery.Connect(Discovery::Ports::kAll));
    clock.RunFor(1s);
    EXPECT_EQ(other.result, 0);
}

TEST_F(DiscoveryTest, AnAdapterPulledDuringTheScanOnlyFailsItsPort) {
    ports.SetStatus(4, PortStatus::kOk);
    ports.Plug(6, device);
    device.Replies["~TX:Hello,tarnex\r\n"] = "TX:Hello,sever\r\n";
    Running<int> connect(clock, core.discovery.Connect(Discovery::Ports::kAll));
    clock.RunFor(2s);
    ports.Unplug(4);
    clock.RunFor(1s);
    EXPECT_EQ(connect.result, 6);
    EXPECT_EQ(losses, 0);
}

TEST_F(DiscoveryTest, PortsThatAnOperatorCanFreeAreNamedOnce) {
    ports.SetStatus(2, PortStatus::kForbidden);
    ports.SetStatus(3, PortStatus::kBusy);
    ports.SetStatus(4, PortStatus::kUnusable);
    for (int scan = 0; scan < 3; ++scan) {
        Running<int> connect(clock, core.discovery.Connect(Discovery::Ports::kAll));
        clock.RunFor(10s);
    }
    ASSERT_EQ(said.size(), 2u);
    EXPECT_NE(said[0].find("COM2"), std::string::npos);
    EXPECT_NE(said[1].find("COM3"), std::string::npos);

    ports.SetStatus(2, PortStatus::kOk);
    ports.SetStatus(3, PortStatus::kAbsent);
    Running<int> connect(clock, core.discovery.Connect(Discovery::Ports::kAll));
    clock.RunFor(30s);
    ASSERT_EQ(said.size(), 4u);
    EXPECT_NE(said[2].find("can be opened now"), std::string::npos);
    EXPECT_NE(said[3].find("is no serial line any more"), std::string::npos);
}

} // namespace
} // namespace tarnex
