#include "adapters/asio/asio_tcp_client.h"
#include "programs/tcp_listener.h"
#include "simulator/simulated_mail_server.h"
#include "tests/contracts/contract.h"

namespace tarnex {
namespace {

struct TcpRig : Rig {
    virtual TcpClients& Clients() = 0;
    MailSink sink; // answers at localhost, at port
    std::uint16_t port = 2525;
    // Nobody answers there. One that was free a moment ago the system may choose for the client's
    // own end, which then connects to itself.
    const std::uint16_t closed_port = 1;
};
struct AsioTcp : OnRealLoop<TcpRig> {
    AsioTcp() {
        EXPECT_EQ(listener.Listen(0), "");
        port = listener.Port();
    }
    TcpClients& Clients() override { return clients; }
    void Answer(ConnectionId id, const SinkAnswer& answer) {
        for (const std::string& packet : answer.packets)
            listener.Send(id, packet);
        if (answer.close)
            listener.Close(id);
    }

    AsioTcpClients clients{loop};
    std::map<ConnectionId, MailSink::Session> sessions;
    TcpListener listener{
        loop,
        {.accepted =
             [this](auto id) {
                 Answer(id, sessions.try_emplace(id, sink).first->second.Connected());
             },
         .received = [this](auto id, auto bytes) { Answer(id, sessions.at(id).Receive(bytes)); },
         .ended = [](ConnectionId) {}}};
};
struct SimulatedTcp : OnSimulatedClock<TcpRig> {
    SimulatedTcp() { clients.Serve("localhost", port, sink); }
    TcpClients& Clients() override { return clients; }

    SimulatedTcpNetwork clients{loop};
};

struct TcpContract : Contract<TcpRig> {
    void Connect() { client->Connect("localhost", rig->port); }
    bool Hears(std::string_view end) {
        return Until([&] { return received.ends_with(end); });
    }

    const std::string greeting = "220 mail sink ready\r\n";
    int connected = 0;
    std::string received;
    std::vector<TcpEnd> ends;
    std::unique_ptr<TcpClient> client = rig->Clients().Create({
        .connected = [this] { ++connected; },
        .received = [this](std::string_view bytes) { received += bytes; },
        .ended = [this](const TcpEnd& end) { ends.push_back(end); },
    });
};

TEST_P(TcpContract, BytesPassBothWaysUpToTheEnd) {
    client->Send("QUIT\r\n"); // too early
    Connect();
    client->Send("QUIT\r\n");
    EXPECT_EQ(connected, 0);
    ASSERT_TRUE(Hears(greeting));
    client->Send("HELO x\r\nMAIL FROM:<a@b>\r\nRCPT TO:<c@d>\r\nDATA\r\n");
    std::string content; // more than a system takes at once
    for (int i = 0; i < 160; ++i) {
        const std::string line = std::to_string(i) + std::string(60'000, 'x') + "\r\n";
        client->Send(line);
        content += line;
    }
    client->Send(".\r\nQUIT\r\n");
    ASSERT_TRUE(Until([&] { return !ends.empty(); }));
    ASSERT_EQ(rig->sink.Mails.size(), 1u);
    EXPECT_TRUE(rig->sink.Mails[0].content == content);
    EXPECT_TRUE(received.ends_with("250 taken\r\n221 bye\r\n"));
    client->Send("dropped");
    RunForAWhile();
    EXPECT_EQ(connected, 1);
    ASSERT_EQ(ends.size(), 1u);
    EXPECT_EQ(ends[0].why, "closed by the other side");
}

TEST_P(TcpContract, ARefusalIsToldOnceAndNotFromWithinTheCall) {
    client->Connect("localhost", rig->closed_port);
    EXPECT_TRUE(ends.empty());
    ASSERT_TRUE(Until([&] { return !ends.empty(); }));
    RunForAWhile();
    ASSERT_EQ(ends.size(), 1u);
    EXPECT_EQ(ends[0].why, "connection refused");
    EXPECT_FALSE(ends[0].own_machine);
    EXPECT_EQ(connected, 0);
}

TEST_P(TcpContract, AClosedConnectionNeverCallsBack) {
    Connect();
    ASSERT_TRUE(Hears(greeting));
    client->Send("NOOP\r\n");
    Connect(); // replaces the first, whose answer is under way
    ASSERT_TRUE(Until([&] { return connected == 2; }));
    ASSERT_TRUE(Hears(greeting + greeting));
    client->Send("QUIT\r\n");
    for (int i = 0; i < 3; ++i) {
        client->Close();
        Connect();
    }
    client.reset();
    RunForAWhile();
    EXPECT_EQ(received, greeting + greeting);
    EXPECT_EQ(connected, 2);
    EXPECT_TRUE(ends.empty());
}

TEST_P(TcpContract, AHandlerMayDestroyItsClient) {
    const auto connect = [this](bool stays_connected, std::uint16_t port) {
        client = rig->Clients().Create(
            {.connected = [=, this] { stays_connected ? void() : client.reset(); },
             .received = [this](std::string_view) { client.reset(); },
             .ended = [this](const TcpEnd&) { client.reset(); }});
        client->Connect("localhost", port);
        EXPECT_TRUE(Until([&] { return !client; }));
    };
    connect(false, rig->port);
    connect(true, rig->port);
    connect(true, rig->closed_port);
}

INSTANTIATE_TEST_SUITE_P(Asio, TcpContract, testing::Values(&Make<TcpRig, AsioTcp>));
INSTANTIATE_TEST_SUITE_P(Simulated, TcpContract, testing::Values(&Make<TcpRig, SimulatedTcp>));

} // namespace
} // namespace tarnex
