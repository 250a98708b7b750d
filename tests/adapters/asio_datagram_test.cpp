#include "adapters/asio/asio_datagram.h"
#include "tests/adapters/run_until.h"

#include <fstream>
#include <iomanip>
#include <sstream>
#include <vector>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace tarnex {
namespace {

// A plain socket of the operating system: the other side.
class PeerSocket {
  public:
    PeerSocket() : fd_(socket(AF_INET, SOCK_DGRAM, 0)) {
        sockaddr_in address = Address(0);
        bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address);
        socklen_t length = sizeof address;
        getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &length);
        port_ = ntohs(address.sin_port);
    }
    ~PeerSocket() { close(fd_); }

    std::uint16_t Port() const { return port_; }
    bool SendTo(std::uint16_t port, std::string_view bytes) const {
        const sockaddr_in to = Address(port);
        return sendto(fd_, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&to),
                      sizeof to) == static_cast<ssize_t>(bytes.size());
    }
    // What waits, or nothing.
    std::optional<std::string> Receive() const {
        std::string bytes(65'535, '\0');
        const ssize_t size = recv(fd_, bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (size < 0)
            return std::nullopt;
        bytes.resize(static_cast<std::size_t>(size));
        return bytes;
    }

  private:
    static sockaddr_in Address(std::uint16_t port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return address;
    }

    int fd_;
    std::uint16_t port_ = 0;
};

std::uint16_t FreePort() {
    return PeerSocket().Port();
}

// Bytes that wait in the kernel on a bound UDP port, as it counts them.
unsigned long WaitingInKernel(std::uint16_t port) {
    std::ifstream table("/proc/net/udp");
    std::ostringstream local;
    local << "0100007F:" << std::uppercase << std::hex << std::setw(4) << std::setfill('0') << port;
    for (std::string line; std::getline(table, line);)
        if (line.find(local.str()) != std::string::npos) {
            const std::size_t state = line.find(" 07 "); // then "<sending>:<waiting>", in hex
            return std::stoul(line.substr(line.find(':', state) + 1), nullptr, 16);
        }
    return 0;
}

struct AsioDatagram : testing::Test {
    AsioLoop loop;
    AsioDatagramSockets sockets{loop, "127.0.0.1"};
    PeerSocket peer;
    std::vector<Datagram> received;
    const std::uint16_t port = FreePort();
    std::unique_ptr<DatagramSocket> socket =
        sockets.Create({[this](const Datagram& datagram) { received.push_back(datagram); }});
};

TEST_F(AsioDatagram, ABurstIsTakenWholeAndHandledOneATurn) {
    constexpr std::size_t kBurst = 1000;
    std::size_t seen_between = 0; // by a call that the first datagram's handler made
    socket = sockets.Create({[&](const Datagram& datagram) {
        if (received.empty())
            loop.CallAfter(0ms, [&] { seen_between = received.size(); });
        received.push_back(datagram);
    }});
    ASSERT_EQ(socket->Bind(port), "");
    for (std::size_t i = 0; i < kBurst; ++i)
        ASSERT_TRUE(peer.SendTo(port, std::to_string(i)));
    ASSERT_TRUE(RunUntil(loop, [&] { return received.size() == kBurst; }));
    EXPECT_LE(seen_between, 2u);
    for (std::size_t i = 0; i < kBurst; ++i)
        ASSERT_EQ(received[i].bytes, std::to_string(i));
    EXPECT_EQ(received[0].from, (Endpoint{"127.0.0.1", peer.Port()}));
}

TEST_F(AsioDatagram, WhatIsBeyondTheQueueWaitsInTheKernelOrIsCountedAsLost) {
    unsigned long waiting = 0;
    unsigned long lost = 0;
    socket = sockets.Create({[&](const Datagram& datagram) {
                                 if (received.empty())
                                     waiting = WaitingInKernel(port);
                                 received.push_back(datagram);
                             },
                             [&](unsigned long count) { lost += count; }});
    ASSERT_EQ(socket->Bind(port), "");
    const std::string large(60'000, 'x');
    constexpr std::size_t kBurst = 40;
    for (std::size_t i = 0; i < kBurst; ++i)
        ASSERT_TRUE(peer.SendTo(port, large + std::to_string(i)));
    ASSERT_TRUE(RunUntil(loop, [&] { return received.size() == kBurst; }));
    EXPECT_GT(waiting, 10 * large.size());
    for (std::size_t i = 0; i < kBurst; ++i)
        ASSERT_EQ(received[i].bytes.substr(large.size()), std::to_string(i));
    EXPECT_EQ(lost, 0u);

    constexpr std::size_t kFlood = 400; // 24 MB
    for (std::size_t i = 0; i < kFlood; ++i)
        ASSERT_TRUE(peer.SendTo(port, large));
    ASSERT_TRUE(RunUntil(loop, [&] { return received.size() + lost == kBurst + kFlood; }));
    EXPECT_GT(lost, 0u);
}

TEST_F(AsioDatagram, EmptyAndLargestDatagramsPassBothWays) {
    ASSERT_EQ(socket->Bind(port), "");
    for (const std::size_t size : {std::size_t{0}, std::size_t{65'507}}) {
        const std::string bytes(size, 'x');
        received.clear();
        ASSERT_TRUE(peer.SendTo(port, bytes));
        ASSERT_TRUE(RunUntil(loop, [&] { return !received.empty(); }));
        EXPECT_EQ(received[0].bytes, bytes);
        socket->Send(received[0].from, bytes);
        std::optional<std::string> answer;
        ASSERT_TRUE(RunUntil(loop, [&] { return (answer = peer.Receive()).has_value(); }));
        EXPECT_EQ(*answer, bytes);
    }
}

TEST_F(AsioDatagram, RefusalsDoNotDisturbTheSocket) {
    ASSERT_EQ(socket->Bind(port), "");
    const Endpoint nobody{"127.0.0.1", FreePort()};
    EXPECT_TRUE(socket->Send(nobody, "a"));
    EXPECT_TRUE(socket->Send(nobody, "b"));
    EXPECT_FALSE(socket->Send({"no address", 1}, "c"));
    EXPECT_FALSE(socket->Send({"127.0.0.1", 0}, "d"));
    EXPECT_FALSE(socket->Send(nobody, std::string(70'000, 'e')));
    ASSERT_TRUE(peer.SendTo(port, "still here"));
    EXPECT_TRUE(RunUntil(loop, [&] { return !received.empty(); }));
}

TEST_F(AsioDatagram, BindingToTheSamePortLosesNothing) {
    socket = sockets.Create({[this](const Datagram& datagram) {
        EXPECT_EQ(socket->Bind(port), "");
        received.push_back(datagram);
    }});
    ASSERT_EQ(socket->Bind(port), "");
    ASSERT_TRUE(peer.SendTo(port, "1"));
    ASSERT_TRUE(peer.SendTo(port, "2"));
    EXPECT_TRUE(RunUntil(loop, [&] { return received.size() == 2; }));
}

TEST_F(AsioDatagram, ATakenPortIsRefusedUntilItIsFree) {
    EXPECT_EQ(socket->Bind(peer.Port()), "address already in use");
    EXPECT_FALSE(socket->Bound());
    auto other = sockets.Create({[](const Datagram&) {}});
    ASSERT_EQ(other->Bind(port), "");
    EXPECT_EQ(socket->Bind(port), "address already in use");
    other->Close();
    EXPECT_FALSE(other->Bound());
    EXPECT_EQ(socket->Bind(port), "");
    EXPECT_NE(AsioDatagramSockets(loop, "nowhere").Create({})->Bind(0), "");
}

TEST_F(AsioDatagram, AHandlerMayCloseRebindOrDestroyItsSocket) {
    const std::uint16_t next = FreePort();
    int calls = 0;
    socket = sockets.Create({[&](const Datagram&) {
        if (++calls == 1) {
            socket->Close();
            EXPECT_EQ(socket->Bind(port), "");
            EXPECT_EQ(socket->Bind(next), "");
        } else {
            socket.reset();
        }
    }});
    ASSERT_EQ(socket->Bind(port), "");
    ASSERT_TRUE(peer.SendTo(port, "1"));
    ASSERT_TRUE(peer.SendTo(port, "lost with the close"));
    ASSERT_TRUE(RunUntil(loop, [&] { return calls == 1; }));
    ASSERT_TRUE(peer.SendTo(next, "2"));
    ASSERT_TRUE(peer.SendTo(next, "3"));
    ASSERT_TRUE(RunUntil(loop, [&] { return !socket; }));
    EXPECT_TRUE(RunUntil(loop, [&, turns = 0]() mutable { return ++turns > 20; }));
    EXPECT_EQ(calls, 2);
}

// Neither an endless chain of calls nor an endless stream of arrivals starves the other, nor what
// runs before the loop sleeps.
TEST_F(AsioDatagram, CallsAndArrivalsTakeTurns) {
    std::function<void()> chain = [&] { loop.CallAfter(0ms, chain); };
    chain();
    std::size_t echoes = 0;
    bool timer_ran = false;
    socket = sockets.Create({[&](const Datagram&) {
        ++echoes;
        socket->Send({"127.0.0.1", port}, "again");
        socket->Send({"127.0.0.1", port}, "and again");
    }});
    ASSERT_EQ(socket->Bind(port), "");
    ASSERT_TRUE(peer.SendTo(port, "go"));
    loop.CallAfter(20ms, [&] { timer_ran = true; });
    bool looked = false;
    loop.BeforeSleep([&] { looked = true; });
    EXPECT_TRUE(RunUntil(loop, [&] { return timer_ran && looked && echoes > 100; }));
}

} // namespace
} // namespace tarnex
