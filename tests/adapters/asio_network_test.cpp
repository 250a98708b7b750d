#include "adapters/asio/asio_datagram.h"
#include "adapters/asio/asio_tcp_client.h"
#include "programs/tcp_listener.h"
#include "tests/adapters/run_until.h"

#include <vector>

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace tarnex {
namespace {

// What the port's contract does not tell: see tests/contracts.
struct AsioDatagram : testing::Test {
    AsioLoop loop;
    AsioDatagramSockets sockets{loop, "127.0.0.1"};
    std::function<void(const Datagram&)> handler = [](const Datagram&) {};
    std::vector<Datagram> received;
    unsigned long lost = 0;
    std::unique_ptr<DatagramSocket> socket =
        sockets.Create({[this](const Datagram& datagram) {
                            handler(datagram);
                            received.push_back(datagram);
                        },
                        [this](unsigned long count) { lost += count; }});
    Endpoint there{"127.0.0.1", 47840};

    AsioDatagram() {
        while (!socket->Bind(there.port).empty())
            ++there.port;
    }
    void Send(int count, const std::string& bytes) {
        const auto sender = sockets.Create({});
        ASSERT_EQ(sender->Bind(0), "");
        for (int i = 0; i < count; ++i)
            ASSERT_TRUE(sender->Send(there, bytes));
    }
};

TEST_F(AsioDatagram, OneIsHandledATurnAndOnlyWhatTheKernelCannotHoldIsLost) {
    std::size_t seen_between = 0; // by a call that the first datagram's handler made
    handler = [&](const Datagram&) {
        if (received.empty())
            loop.CallAfter(0ms, [&] { seen_between = received.size(); });
    };
    const std::string large(60'000, 'x');
    Send(40, large);
    ASSERT_TRUE(RunUntil(loop, [&] { return received.size() == 40; }));
    EXPECT_LE(seen_between, 2u);
    EXPECT_EQ(lost, 0u);

    Send(400, large); // 24 MB
    ASSERT_TRUE(RunUntil(loop, [&] { return received.size() + lost == 440; }));
    EXPECT_GT(lost, 0u);
}

TEST_F(AsioDatagram, WhatCannotBeSentOrBoundIsRefused) {
    EXPECT_FALSE(socket->Send({"no address", 1}, "c"));
    EXPECT_FALSE(socket->Send({"127.0.0.1", 0}, "d"));
    EXPECT_FALSE(socket->Send(there, std::string(70'000, 'e')));
    EXPECT_NE(AsioDatagramSockets(loop, "nowhere").Create({})->Bind(0), "");
    Send(1, "still here");
    EXPECT_TRUE(RunUntil(loop, [&] { return !received.empty(); }));
}

// Neither an endless chain of calls nor an endless stream of arrivals starves the other, nor what
// runs before the loop sleeps.
TEST_F(AsioDatagram, CallsAndArrivalsTakeTurns) {
    std::function<void()> chain = [&] { loop.CallAfter(0ms, chain); };
    chain();
    handler = [&](const Datagram&) {
        socket->Send(there, "again");
        socket->Send(there, "and again");
    };
    Send(1, "go");
    bool timer_ran = false;
    loop.CallAfter(20ms, [&] { timer_ran = true; });
    bool looked = false;
    loop.BeforeSleep([&] { looked = true; });
    EXPECT_TRUE(RunUntil(loop, [&] { return timer_ran && looked && received.size() > 100; }));
}

// A server that keeps what it hears.
struct Server {
    explicit Server(AsioLoop& loop)
        : listener(loop, {.accepted = [this](ConnectionId id) { connections.push_back(id); },
                          .received = [this](ConnectionId, std::string_view b) { heard += b; },
                          .ended = [](ConnectionId) {}}) {
        EXPECT_EQ(listener.Listen(0), "");
    }
    void Send(std::string_view bytes) { listener.Send(connections.back(), bytes); }
    void HangUp() { listener.Close(connections.back()); }

    TcpListener listener;
    std::vector<ConnectionId> connections;
    std::string heard;
};

std::string Numbers(int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += std::to_string(1000'000'000 + i);
    return text;
}

struct AsioTcp : testing::Test {
    AsioLoop loop;
    AsioTcpClients clients{loop};
    std::unique_ptr<Server> server = std::make_unique<Server>(loop);
    const std::uint16_t port = server->listener.Port();
    int connected = 0;
    std::string received;
    std::vector<std::string> ends;
    std::unique_ptr<TcpClient> client = clients.Create({
        .connected = [this] { ++connected; },
        .received = [this](std::string_view bytes) { received += bytes; },
        .ended =
            [this](const TcpEnd& end) {
                ends.push_back((end.own_machine ? "own machine: " : "") + end.why);
            },
    });

    bool Until(const std::function<bool()>& condition) { return RunUntil(loop, condition); }
    void ConnectTo(Server& to) {
        client->Connect("127.0.0.1", to.listener.Port());
        ASSERT_TRUE(Until(
            [&, before = connected] { return connected > before && !to.connections.empty(); }));
    }
    // Nothing is expected to happen any more.
    void RunForAWhile() {
        RunUntil(
            loop, [] { return false; }, 30ms);
    }
};

TEST_F(AsioTcp, ANameIsLookedUpAndBytesPassBothWaysUpToTheEnd) {
    client->Send("too early");
    client->Connect("localhost", port);
    client->Send("still too early");
    EXPECT_EQ(connected, 0);
    ASSERT_TRUE(Until([&] { return connected == 1; }));
    std::string sent;
    for (int i = 0; i < 60; ++i) { // more than the system takes at once
        const std::string part = Numbers(10'000 + i);
        client->Send(part);
        sent += part;
    }
    ASSERT_TRUE(Until([&] { return server->heard.size() >= sent.size(); }));
    EXPECT_TRUE(server->heard == sent);
    server->Send(Numbers(3000));
    server->HangUp();
    ASSERT_TRUE(Until([&] { return !ends.empty(); }));
    EXPECT_EQ(received, Numbers(3000));
    client->Send("dropped");
    RunForAWhile();
    EXPECT_EQ(ends, std::vector<std::string>{"closed by the other side"});
}

TEST_F(AsioTcp, AFailureIsToldOnceInWords) {
    server.reset();
    client->Connect("127.0.0.1", port);
    EXPECT_TRUE(ends.empty());
    ASSERT_TRUE(Until([&] { return ends.size() == 1; }));
    EXPECT_EQ(ends[0], "connection refused");
    client->Connect(std::string(70, 'x') + ".invalid", 25); // a label too long for any name
    ASSERT_TRUE(Until([&] { return ends.size() == 2; }));
    EXPECT_NE(ends[1], "");
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    const rlimit none{.rlim_cur = 0, .rlim_max = files.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    client->Connect("127.0.0.1", port);
    EXPECT_EQ(ends.size(), 2u);
    ASSERT_TRUE(Until([&] { return ends.size() == 3; }));
    setrlimit(RLIMIT_NOFILE, &files);
    EXPECT_EQ(ends[2], "own machine: no socket for the connection: too many open files");
    RunForAWhile();
    EXPECT_EQ(ends.size(), 3u);
    EXPECT_EQ(connected, 0);
}

TEST_F(AsioTcp, AClosedConnectionNeverCallsBack) {
    ConnectTo(*server);
    Server second(loop);
    server->Send("of the first");
    ConnectTo(second); // replaces the first
    second.Send("of the second");
    ASSERT_TRUE(Until([&] { return received == "of the second"; }));

    second.HangUp();
    for (const char* host : {"127.0.0.1", "localhost", "localhost"}) {
        client->Close();
        client->Connect(host, second.listener.Port());
    }
    client.reset();
    RunForAWhile();
    EXPECT_EQ(connected, 2);
    EXPECT_TRUE(ends.empty());
}

TEST_F(AsioTcp, AHandlerMayDestroyItsClient) {
    const auto create = [this](bool stays_connected) {
        client =
            clients.Create({.connected = [=, this] { stays_connected ? void() : client.reset(); },
                            .received = [this](std::string_view) { client.reset(); },
                            .ended = [this](const TcpEnd&) { client.reset(); }});
    };
    create(false);
    client->Connect("127.0.0.1", port);
    ASSERT_TRUE(Until([&] { return !client; }));

    create(true);
    client->Connect("localhost", port);
    ASSERT_TRUE(Until([&] { return server->connections.size() == 2; }));
    server->Send("x");
    ASSERT_TRUE(Until([&] { return !client; }));

    create(true);
    client->Connect(std::string(70, 'x'), 25);
    EXPECT_TRUE(Until([&] { return !client; }));
}

} // namespace
} // namespace tarnex
