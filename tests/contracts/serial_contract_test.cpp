#include "adapters/linux/pty_line.h"
#include "adapters/system/serial_ports.h"
#include "simulator/simulated_serial.h"
#include "tests/contracts/contract.h"

namespace tarnex {
namespace {

// COM1 is a line with nothing but the test at its far end.
struct SerialRig : Rig {
    virtual SerialPorts& Ports() = 0;
    virtual void Send(std::string_view bytes) = 0; // from the far end
    virtual void HangUp() = 0;
    std::string heard; // at the far end
};

struct TtySerial : OnRealLoop<SerialRig> {
    PtyLine line{loop, [this](std::string_view bytes) { heard += bytes; }};
    const std::string problem = line.Open();
    SystemSerialPorts ports{loop, {line.DeviceName()}};

    SerialPorts& Ports() override { return ports; }
    void Send(std::string_view bytes) override { line.Send(bytes); }
    void HangUp() override { line.Close(); }
};

struct SimulatedSerial : OnSimulatedClock<SerialRig>, SerialDevice {
    SimulatedSerialPorts ports{loop};
    SerialLine* line = nullptr;

    SimulatedSerial() { ports.Plug(1, *this); }
    SerialPorts& Ports() override { return ports; }
    void Send(std::string_view bytes) override { line->Send(bytes); }
    void HangUp() override { ports.Unplug(1); }
    void Plugged(SerialLine& plugged) override { line = &plugged; }
    void Unplugged() override { line = nullptr; }
    void Received(std::string_view bytes) override { heard += bytes; }
};

struct SerialContract : Contract<SerialRig> {
    PortStatus Open() {
        return OpenWith([this] { ++events; }, [this] { ++losses; });
    }
    PortStatus OpenWith(std::function<void()> received, std::function<void()> lost) {
        OpenedPort opened =
            rig->Ports().Open(1, {}, {.received = std::move(received), .lost = std::move(lost)});
        port = std::move(opened.port);
        return opened.status;
    }
    std::unique_ptr<SerialPort> port;
    int events = 0;
    int losses = 0;
};

TEST_P(SerialContract, EveryByteCrossesAndAtMost1024AreTakenAhead) {
    std::string bytes;
    for (int i = 0; i < 3000; ++i)
        bytes += static_cast<char>(i * 7 + i / 256);
    ASSERT_EQ(Open(), PortStatus::kOk);
    EXPECT_EQ(port->Write(bytes), PortStatus::kOk);
    rig->Send(bytes);
    ASSERT_TRUE(
        Until([&] { return rig->heard == bytes && events > 0 && port->InBufferCount() == 1024; }));
    EXPECT_EQ(port->OutBufferCount(), 0u);
    const int before = events;
    std::string received = port->Read(700);
    EXPECT_EQ(received.size(), 700u);
    ASSERT_TRUE(Until([&] { return events > before; })); // the rest follows
    while (received.size() < bytes.size()) {
        ASSERT_TRUE(Until([&] { return port->InBufferCount() > 0; }));
        ASSERT_LE(port->InBufferCount(), 1024u);
        received += port->Read(700);
    }
    EXPECT_EQ(received, bytes);
}

TEST_P(SerialContract, OnePortHasOneUserAndEmptyBuffersAtFirst) {
    rig->Send("before anybody listens");
    ASSERT_EQ(Open(), PortStatus::kOk);
    EXPECT_EQ(rig->Ports().Open(1, {}, {}).status, PortStatus::kBusy);
    RunForAWhile();
    EXPECT_EQ(port->Read(100), "");
    port.reset();
    EXPECT_EQ(Open(), PortStatus::kOk);
    for (const int none : {0, 2, 21}) {
        EXPECT_EQ(rig->Ports().Open(none, {}, {}).status, PortStatus::kAbsent);
        EXPECT_EQ(rig->Ports().DeviceName(none), "");
    }
}

TEST_P(SerialContract, AHangUpIsToldOnce) {
    ASSERT_EQ(Open(), PortStatus::kOk);
    rig->HangUp();
    EXPECT_EQ(losses, 0);
    ASSERT_TRUE(Until([&] { return losses == 1; }));
    EXPECT_EQ(port->Write("x"), PortStatus::kLost);
    EXPECT_EQ(port->OutBufferCount(), 0u);
    RunForAWhile();
    EXPECT_EQ(losses, 1);
    EXPECT_EQ(rig->Ports().Open(1, {}, {}).status, PortStatus::kAbsent);
}

TEST_P(SerialContract, AHandlerMayDestroyItsPortAndIsNeverCalledFromAWrite) {
    const auto destroy = [this] {
        ++events;
        port.reset();
    };
    OpenWith(destroy, destroy);
    rig->Send("x");
    EXPECT_EQ(events, 0);
    ASSERT_TRUE(Until([&] { return events == 1; }));
    OpenWith(destroy, destroy);
    rig->HangUp();
    EXPECT_EQ(port->Write("x"), PortStatus::kLost);
    EXPECT_EQ(events, 1);
    ASSERT_TRUE(Until([&] { return events == 2; }));
}

INSTANTIATE_TEST_SUITE_P(Tty, SerialContract, testing::Values(&Make<SerialRig, TtySerial>));
INSTANTIATE_TEST_SUITE_P(Simulated, SerialContract,
                         testing::Values(&Make<SerialRig, SimulatedSerial>));

} // namespace
} // namespace tarnex
