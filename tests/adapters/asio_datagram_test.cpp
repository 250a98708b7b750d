#include "adapters/asio/asio_datagram.h"
#include "tests/adapters/run_until.h"

#include <fstream>
#include <vector>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

// Bytes that wait in the kernel on a bound UDP port, as it counts them.
unsigned long WaitingInKernel(std::uint16_t port) {
    std::ifstream table("/proc/net/udp");
    const std::string all{std::istreambuf_iterator<char>(table), {}};
    char local[20];
    snprintf(local, sizeof local, "0100007F:%04X", unsigned(port));
    const std::size_t state =
        all.find(" 07 ", all.find(local)); // then "<sending>:<waiting>", in hex
    return std::stoul(all.substr(all.find(':', state) + 1), nullptr, 16);
}

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

TEST_F(AsioDatagram, OneIsHandledATurnAndWhatIsBeyondTheQueueWaitsInTheKernelOrIsLost) {
    unsigned long waiting = 0;
    std::size_t seen_between = 0; // by a call that the first datagram's handler made
    handler = [&](const Datagram&) {
        if (!received.empty())
            return;
        waiting = WaitingInKernel(there.port);
        loop.CallAfter(0ms, [&] { seen_between = received.size(); });
    };
    const std::string large(60'000, 'x');
    Send(40, large);
    ASSERT_TRUE(RunUntil(loop, [&] { return received.size() == 40; }));
    EXPECT_LE(seen_between, 2u);
    EXPECT_GT(waiting, 10 * large.size());
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

} // namespace
} // namespace tarnex
