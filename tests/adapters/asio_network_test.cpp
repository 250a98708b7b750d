#include "adapters/asio/asio_datagram.h"
#include "adapters/asio/asio_tcp_client.h"
#include "adapters/system/process.h"
#include "adapters/system/system_machine_look.h"
#include "tests/adapters/run_until.h"

#include <vector>

#include <gtest/gtest.h>
#ifndef _WIN32
#include <sys/resource.h>
#endif

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

#ifndef _WIN32        // which does not count them
    Send(400, large); // 24 MB
    ASSERT_TRUE(RunUntil(loop, [&] { return received.size() + lost == 440; }));
    EXPECT_GT(lost, 0u);
#endif
}

TEST_F(AsioDatagram, WhatCannotBeSentOrBoundIsRefused) {
    const std::string own = "process " + std::to_string(ThisProcess()) + " (test_adapters";
    for (const auto& [address, holder] :
         {std::pair{"127.0.0.1", own}, {"0.0.0.0", own}, {"127.0.0.2", ""}})
        EXPECT_EQ(SystemMachineLook().PortHolder(address, there.port).substr(0, own.size()),
                  holder);
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

// What the port's contract does not tell: see tests/contracts.
TEST(AsioTcp, AFailureIsToldOnceInWords) {
    AsioLoop loop;
    AsioTcpClients clients{loop};
    std::vector<TcpEnd> ends;
    const auto client = clients.Create({.connected = [] {},
                                        .received = [](std::string_view) {},
                                        .ended = [&](const TcpEnd& end) { ends.push_back(end); }});
    // The refusal comes first: without files, sanitizers cannot look at a type that is new to them.
    client->Connect("127.0.0.1", 1);
    ASSERT_TRUE(RunUntil(loop, [&] { return ends.size() == 1; }));
    EXPECT_EQ(ends[0].why, "connection refused");
    client->Connect(std::string(70, 'x') + ".invalid", 25); // a label too long for any name
    ASSERT_TRUE(RunUntil(loop, [&] { return ends.size() == 2; }));
    EXPECT_NE(ends[1].why, "");
#ifndef _WIN32 // where sockets do not end so soon
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    const rlimit none{.rlim_cur = 0, .rlim_max = files.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    client->Connect("127.0.0.1", 1);
    EXPECT_EQ(ends.size(), 2u);
    ASSERT_TRUE(RunUntil(loop, [&] { return ends.size() == 3; }));
    setrlimit(RLIMIT_NOFILE, &files);
    EXPECT_EQ(ends[2].why, "no socket for the connection: too many open files");
    EXPECT_TRUE(ends[2].own_machine);
#endif
}

} // namespace
} // namespace tarnex
