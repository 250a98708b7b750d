#include "simulator/simulated_clock.h"
#include "simulator/simulated_serial.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

struct NotingDevice : SerialDevice {
    void Plugged(SerialLine& plugged) override { line = &plugged; }
    void Unplugged() override { line = nullptr; }
    void Opened(const LineSettings& settings) override { baud = settings.baud; }
    void Closed() override { baud = 0; }
    void Received(std::string_view bytes) override { heard += bytes; }

    SerialLine* line = nullptr;
    int baud = 0;
    std::string heard;
};

class SimulatedSerial : public testing::Test {
  protected:
    std::unique_ptr<SerialPort> Open(int number) {
        return ports.Open(number, {}, {[&] { ++received; }, [&] { ++lost; }}).port;
    }

    SimulatedClock clock;
    NotingDevice device;
    SimulatedSerialPorts ports{clock};
    int received = 0;
    int lost = 0;
};

TEST_F(SimulatedSerial, OpensOnlyWhatIsThereAndFree) {
    ports.Plug(3, device);
    ports.SetStatus(4, PortStatus::kForbidden);
    ports.SetStatus(5, PortStatus::kOk); // there, with nobody behind it
    const auto port = Open(3);
    ASSERT_TRUE(port);
    EXPECT_EQ(device.baud, 19200);
    EXPECT_EQ(ports.Open(2, {}, {}).status, PortStatus::kAbsent);
    EXPECT_EQ(ports.Open(3, {}, {}).status, PortStatus::kBusy);
    EXPECT_EQ(ports.Open(4, {}, {}).status, PortStatus::kForbidden);
    EXPECT_EQ(ports.Open(5, {}, {}).status, PortStatus::kOk);
    for (const int number : {-1, 0, 21}) {
        EXPECT_EQ(ports.Open(number, {}, {}).status, PortStatus::kAbsent);
        EXPECT_EQ(ports.DeviceName(number), "");
    }
}

TEST_F(SimulatedSerial, BytesPassBothWaysAndTheirEventComesFromTheLoop) {
    ports.Plug(1, device);
    const auto port = Open(1);
    device.line->Send("ab");
    device.line->Send("cd");
    EXPECT_EQ(received, 0);
    EXPECT_EQ(port->InBufferCount(), 4u);
    clock.RunFor(0ms);
    EXPECT_EQ(received, 1);
    EXPECT_EQ(port->Read(3), "abc");
    ports.HoldOutput(1, true);
    port->Write("x");
    port->Write("y");
    EXPECT_EQ(port->OutBufferCount(), 2u);
    EXPECT_EQ(device.heard, "");
    ports.HoldOutput(1, false);
    EXPECT_EQ(port->OutBufferCount(), 0u);
    EXPECT_EQ(device.heard, "xy");
    EXPECT_EQ(ports.Written(1), "xy");
}

TEST_F(SimulatedSerial, WhatTheInputBufferCannotHoldFollowsWithAnEventOfItsOwn) {
    ports.Plug(1, device);
    const auto port = Open(1);
    device.line->Send(std::string(1030, 'a'));
    clock.RunFor(0ms);
    EXPECT_EQ(port->Read(5000).size(), 1024u);
    clock.RunFor(0ms);
    EXPECT_EQ(received, 2);
    EXPECT_EQ(port->Read(5000).size(), 6u);
    clock.RunFor(1s);
    EXPECT_EQ(received, 2);
}

TEST_F(SimulatedSerial, APulledPortIsLostOnceAndANewOneCanBeOpened) {
    ports.Plug(7, device);
    auto port = Open(7);
    device.line->Send("late");
    ports.Unplug(7);
    EXPECT_EQ(lost, 0);
    EXPECT_EQ(port->Write("x"), PortStatus::kLost);
    clock.RunFor(1s);
    EXPECT_EQ(lost, 1);
    EXPECT_EQ(received, 0);
    EXPECT_EQ(ports.Open(7, {}, {}).status, PortStatus::kAbsent);
    ports.Plug(7, device);
    const auto again = Open(7);
    ASSERT_TRUE(again);
    port.reset(); // the lost one must not close the new one
    EXPECT_TRUE(ports.OpenSettings(7));
    EXPECT_EQ(again->Write("x"), PortStatus::kOk);
}

TEST_F(SimulatedSerial, AHandlerMayCloseItsPort) {
    ports.Plug(1, device);
    std::unique_ptr<SerialPort> port;
    port = ports.Open(1, {}, {[&] { port.reset(); }, [] {}}).port;
    device.line->Send("a");
    clock.RunFor(0ms);
    EXPECT_EQ(device.baud, 0);
    device.line->Send("b"); // nobody has the port open
    clock.RunFor(1s);
}

} // namespace
} // namespace tarnex
