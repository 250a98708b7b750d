#include "adapters/asio/asio_tcp_client.h"
#include "adapters/linux/unique_fd.h"
#include "tests/adapters/run_until.h"

#include <vector>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>

namespace tarnex {
namespace {

// A plain server of the operating system with one connection at a time.
class Server {
  public:
    Server() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        bind(listener_.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address);
        listen(listener_.Get(), 5);
        socklen_t length = sizeof address;
        getsockname(listener_.Get(), reinterpret_cast<sockaddr*>(&address), &length);
        port_ = ntohs(address.sin_port);
    }

    std::uint16_t Port() const { return port_; }
    bool Accept() {
        connection_ =
            UniqueFd(accept4(listener_.Get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        return static_cast<bool>(connection_);
    }
    bool Send(std::string_view bytes) const {
        return send(connection_.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
               static_cast<ssize_t>(bytes.size());
    }
    std::string Receive() const {
        std::string bytes(65'536, '\0');
        const ssize_t size = recv(connection_.Get(), bytes.data(), bytes.size(), 0);
        bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
        return bytes;
    }
    void Hangup() { connection_ = UniqueFd(); }
    void StopListening() { listener_ = UniqueFd(); }

  private:
    UniqueFd listener_;
    UniqueFd connection_;
    std::uint16_t port_ = 0;
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
    Server server;
    int connected = 0;
    std::string received;
    std::size_t longest = 0;
    std::vector<std::string> ends;
    std::unique_ptr<TcpClient> client = clients.Create({
        .connected = [this] { ++connected; },
        .received =
            [this](std::string_view bytes) {
                received += bytes;
                longest = std::max(longest, bytes.size());
            },
        .ended =
            [this](const TcpEnd& end) {
                ends.push_back((end.own_machine ? "own machine: " : "") + end.why);
            },
    });

    void ConnectTo(Server& to) {
        client->Connect("127.0.0.1", to.Port());
        ASSERT_TRUE(RunUntil(loop, [&, before = connected] { return connected > before; }));
        ASSERT_TRUE(to.Accept());
    }
    // Nothing happens any more.
    void RunForAWhile() {
        RunUntil(
            loop, [] { return false; }, 30ms);
    }
};

TEST_F(AsioTcp, ANameIsLookedUpAndBytesPassBothWays) {
    client->Send("too early");
    client->Connect("localhost", server.Port());
    client->Send("still too early");
    EXPECT_EQ(connected, 0);
    ASSERT_TRUE(RunUntil(loop, [&] { return connected == 1; }));
    ASSERT_TRUE(server.Accept());
    client->Send("HELO ");
    client->Send("unit\r\n");
    std::string arrived;
    ASSERT_TRUE(RunUntil(loop, [&] { return (arrived += server.Receive()).size() == 11; }));
    EXPECT_EQ(arrived, "HELO unit\r\n");
    ASSERT_TRUE(server.Send("250 ok\r\n"));
    EXPECT_TRUE(RunUntil(loop, [&] { return received == "250 ok\r\n"; }));
}

TEST_F(AsioTcp, WhatWaitsArrivesAtOnceAndBeforeTheEnd) {
    ConnectTo(server);
    const std::string sent = Numbers(3000);
    ASSERT_TRUE(server.Send(sent));
    server.Hangup();
    ASSERT_TRUE(RunUntil(loop, [&] { return !ends.empty(); }));
    EXPECT_EQ(received, sent);
    EXPECT_EQ(longest, sent.size());
    EXPECT_EQ(ends, std::vector<std::string>{"closed by the other side"});
    client->Send("dropped");
    RunForAWhile();
    EXPECT_EQ(ends.size(), 1u);
}

TEST_F(AsioTcp, ManySendsToASlowReaderArriveInOrder) {
    ConnectTo(server);
    std::string sent;
    for (int i = 0; i < 60; ++i) {
        const std::string part = Numbers(10'000 + i);
        client->Send(part);
        sent += part;
    }
    std::string arrived;
    ASSERT_TRUE(RunUntil(loop, [&] {
        arrived += server.Receive();
        return arrived.size() >= sent.size();
    }));
    EXPECT_TRUE(arrived == sent);
}

TEST_F(AsioTcp, AFailureIsToldOnceInWords) {
    server.StopListening();
    client->Connect("127.0.0.1", server.Port());
    EXPECT_TRUE(ends.empty());
    ASSERT_TRUE(RunUntil(loop, [&] { return ends.size() == 1; }));
    EXPECT_EQ(ends[0], "connection refused");
    client->Connect(std::string(70, 'x') + ".invalid", 25); // a label too long for any name
    ASSERT_TRUE(RunUntil(loop, [&] { return ends.size() == 2; }));
    EXPECT_NE(ends[1], "");
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    const rlimit none{.rlim_cur = 0, .rlim_max = files.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    client->Connect("127.0.0.1", server.Port());
    EXPECT_EQ(ends.size(), 2u);
    ASSERT_TRUE(RunUntil(loop, [&] { return ends.size() == 3; }));
    setrlimit(RLIMIT_NOFILE, &files);
    EXPECT_EQ(ends[2], "own machine: no socket for the connection: too many open files");
    RunForAWhile();
    EXPECT_EQ(ends.size(), 3u);
    EXPECT_EQ(connected, 0);
}

TEST_F(AsioTcp, AClosedConnectionNeverCallsBack) {
    ConnectTo(server);
    Server second;
    ASSERT_TRUE(server.Send("of the first"));
    client->Connect("127.0.0.1", second.Port()); // replaces the first
    ASSERT_TRUE(RunUntil(loop, [&] { return connected == 2; }));
    ASSERT_TRUE(second.Accept());
    ASSERT_TRUE(second.Send("of the second"));
    ASSERT_TRUE(RunUntil(loop, [&] { return received == "of the second"; }));

    second.Hangup();
    client->Close();
    client->Connect("127.0.0.1", second.Port());
    client->Close();
    client->Connect("localhost", second.Port());
    client->Close();
    client->Connect("localhost", second.Port());
    client.reset();
    RunForAWhile();
    EXPECT_EQ(connected, 2);
    EXPECT_EQ(received, "of the second");
    EXPECT_TRUE(ends.empty());
}

TEST_F(AsioTcp, BytesThatWereReadAreNotToldAfterClose) {
    Server servers[2];
    std::unique_ptr<TcpClient> pair[2];
    int ready = 0;
    int told = 0;
    for (int i = 0; i < 2; ++i) {
        pair[i] = clients.Create({.connected = [&] { ++ready; },
                                  .received =
                                      [&, i](std::string_view) {
                                          if (++told == 3) // each has its second piece by now
                                              pair[1 - i]->Close();
                                          else
                                              EXPECT_TRUE(servers[i].Send("more"));
                                      },
                                  .ended = [](const TcpEnd&) {}});
        pair[i]->Connect("127.0.0.1", servers[i].Port());
    }
    ASSERT_TRUE(RunUntil(loop, [&] { return ready == 2; }));
    for (Server& each : servers) {
        ASSERT_TRUE(each.Accept());
        ASSERT_TRUE(each.Send("x"));
    }
    RunForAWhile();
    EXPECT_EQ(told, 3);
}

TEST_F(AsioTcp, AHandlerMayDestroyItsClient) {
    const auto destroy = [this] { client.reset(); };
    const TcpEvents events{.connected = [] {},
                           .received = [=](std::string_view) { destroy(); },
                           .ended = [=](const TcpEnd&) { destroy(); }};
    TcpEvents destroy_on_connect = events;
    destroy_on_connect.connected = destroy;

    client = clients.Create(destroy_on_connect);
    client->Connect("127.0.0.1", server.Port());
    ASSERT_TRUE(RunUntil(loop, [&] { return !client; }));

    client = clients.Create(events);
    ASSERT_TRUE(server.Accept());
    client->Connect("localhost", server.Port());
    ASSERT_TRUE(RunUntil(loop, [&] { return server.Accept(); }));
    ASSERT_TRUE(server.Send("x"));
    ASSERT_TRUE(RunUntil(loop, [&] { return !client; }));

    client = clients.Create(events);
    client->Connect(std::string(70, 'x'), 25);
    EXPECT_TRUE(RunUntil(loop, [&] { return !client; }));
}

} // namespace
} // namespace tarnex
