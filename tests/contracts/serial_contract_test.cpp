#include "adapters/system/serial_ports.h"
#include "simulator/simulated_serial.h"
#include "tests/contracts/contract.h"

#ifdef _WIN32
#include "adapters/asio/asio_tcp_client.h"
#include "adapters/system/environment.h"
#else
#include "adapters/linux/pty_line.h"
#endif

namespace tarnex {
namespace {

// COM1 is a line with nothing but the test at its far end.
struct SerialRig : Rig {
    virtual SerialPorts& Ports() = 0;
    virtual void Send(std::string_view bytes) = 0; // from the far end
    virtual void HangUp() = 0;
    std::string heard; // at the far end
    // A second user, and a write that meets a hang-up.
    PortStatus busy = PortStatus::kBusy;
    PortStatus hung_up = PortStatus::kLost;
};

#ifdef _WIN32
// Under Wine a pseudo terminal of the script far-ends, where that runs. A second user may have it
// there.
struct SystemSerial : OnRealLoop<SerialRig> {
    std::unique_ptr<TcpClient> line =
        AsioTcpClients(loop).Create({.connected = [] {},
                                     .received = [this](std::string_view bytes) { heard += bytes; },
                                     .ended = [](const TcpEnd&) {}});
    SystemSerialPorts ports{loop, {}};

    SystemSerial() {
        busy = hung_up = PortStatus::kOk;
        line->Connect("127.0.0.1", 7800);
        Run([this] { return heard.ends_with('\n'); }, 60s);
        ports.SetPaths({"Z:" + heard.substr(0, heard.size() - 1)});
        heard.clear();
    }
    SerialPorts& Ports() override { return ports; }
    void Send(std::string_view bytes) override { line->Send(bytes); }
    void HangUp() override { line->Close(); }
};
const bool kHasSystemSerial = !Environment("TARNEX_FAR_ENDS").empty();
#else
struct SystemSerial : OnRealLoop<SerialRig> {
    PtyLine line{loop, [this](std::string_view bytes) { heard += bytes; }};
    const std::string problem = line.Open();
    SystemSerialPorts ports{loop, {line.DeviceName()}};

    SerialPorts& Ports() override { return ports; }
    void Send(std::string_view bytes) override { line.Send(bytes); }
    void HangUp() override { line.Close(); }
};
constexpr bool kHasSystemSerial = true;
#endif

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
    ASSERT_EQ(Open(), PortStatus::kOk);
    EXPECT_EQ(rig->Ports().Open(1, {}, {}).status, rig->busy);
    rig->Send(std::string(3000, 'x')); // of which the driver keeps some
    ASSERT_TRUE(Until([&] { return port->InBufferCount() == 1024; }));
    port.reset();
    ASSERT_EQ(Open(), PortStatus::kOk);
    RunForAWhile();
    EXPECT_EQ(port->Read(100), "");
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
    EXPECT_EQ(port->Write("x"), rig->hung_up);
    EXPECT_EQ(events, 1);
    ASSERT_TRUE(Until([&] { return events == 2; }));
}

INSTANTIATE_TEST_SUITE_P(System, SerialContract,
                         testing::ValuesIn(std::vector<MakeRig<SerialRig>>(
                             kHasSystemSerial, &Make<SerialRig, SystemSerial>)));
INSTANTIATE_TEST_SUITE_P(Simulated, SerialContract,
                         testing::Values(&Make<SerialRig, SimulatedSerial>));

} // namespace
} // namespace tarnex
