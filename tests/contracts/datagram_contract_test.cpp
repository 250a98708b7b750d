#include "adapters/asio/asio_datagram.h"
#include "simulator/simulated_network.h"
#include "tests/contracts/contract.h"

#include <vector>

namespace tarnex {
namespace {

struct DatagramRig : Rig {
    virtual DatagramSockets& Sockets() = 0; // at 127.0.0.1
};
struct AsioDatagrams : OnRealLoop<DatagramRig> {
    AsioDatagramSockets sockets{loop, "127.0.0.1"};
    DatagramSockets& Sockets() override { return sockets; }
};
struct SimulatedDatagrams : OnSimulatedClock<DatagramRig> {
    SimulatedNetwork sockets{loop};
    DatagramSockets& Sockets() override { return sockets; }
};

struct DatagramContract : Contract<DatagramRig> {
    // Binds to a port that nobody has, and gives its number.
    static std::uint16_t BindTo(DatagramSocket& socket) {
        std::uint16_t port = 47840;
        while (!socket.Bind(port).empty())
            ++port;
        return port;
    }
    std::unique_ptr<DatagramSocket> Create(std::function<void(const Datagram&)> handler) {
        return rig->Sockets().Create({.received = std::move(handler)});
    }
    Endpoint At(std::uint16_t at) { return {"127.0.0.1", at}; }

    std::vector<Datagram> received, answers;
    std::unique_ptr<DatagramSocket> socket =
        Create([this](const Datagram& datagram) { received.push_back(datagram); });
    const std::uint16_t port = BindTo(*socket);
    std::unique_ptr<DatagramSocket> peer =
        Create([this](const Datagram& datagram) { answers.push_back(datagram); });
    const std::uint16_t peer_port = BindTo(*peer);
};

TEST_P(DatagramContract, ABurstArrivesWholeAndInOrderButNeverAtOnce) {
    constexpr std::size_t kBurst = 1000;
    for (std::size_t i = 0; i < kBurst; ++i)
        ASSERT_TRUE(peer->Send(At(port), std::to_string(i)));
    EXPECT_TRUE(received.empty());
    ASSERT_TRUE(Until([&] { return received.size() == kBurst; }));
    for (std::size_t i = 0; i < kBurst; ++i)
        ASSERT_EQ(received[i].bytes, std::to_string(i));
    EXPECT_EQ(received[0].from, At(peer_port));
}

TEST_P(DatagramContract, EmptyAndLargestDatagramsPassBothWays) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{65'507}}) {
        received.clear();
        answers.clear();
        ASSERT_TRUE(peer->Send(At(port), std::string(size, 'x')));
        ASSERT_TRUE(Until([&] { return !received.empty(); }));
        ASSERT_TRUE(socket->Send(received[0].from, received[0].bytes));
        ASSERT_TRUE(Until([&] { return !answers.empty(); }));
        EXPECT_EQ(answers[0].bytes, std::string(size, 'x'));
    }
}

TEST_P(DatagramContract, ATakenPortIsRefusedUntilItIsFree) {
    EXPECT_EQ(socket->Bind(peer_port), "address already in use");
    EXPECT_FALSE(socket->Bound());
    EXPECT_FALSE(socket->Send(At(peer_port), "x"));
    peer->Close();
    EXPECT_FALSE(peer->Bound());
    EXPECT_EQ(socket->Bind(peer_port), "");
    EXPECT_TRUE(socket->Bound());
}

TEST_P(DatagramContract, ADatagramThatNobodyTakesDisturbsNothing) {
    peer->Close();
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(socket->Send(At(peer_port), "x"));
    ASSERT_EQ(peer->Bind(peer_port), "");
    ASSERT_TRUE(peer->Send(At(port), "still here"));
    EXPECT_TRUE(Until([&] { return !received.empty(); }));
    EXPECT_TRUE(answers.empty());
}

TEST_P(DatagramContract, AHandlerMayBindAgainCloseOrDestroyItsSocket) {
    auto next = Create({});
    const std::uint16_t next_port = BindTo(*next);
    next.reset();
    std::string heard;
    socket.reset();
    socket = Create([&](const Datagram& datagram) {
        heard += datagram.bytes;
        if (heard == "a") {
            EXPECT_EQ(socket->Bind(port), ""); // as it is: "b" is not lost
        } else if (heard == "ab") {
            socket->Close();
            EXPECT_EQ(socket->Bind(port), "");
            EXPECT_EQ(socket->Bind(next_port), "");
        } else {
            socket.reset();
        }
    });
    ASSERT_EQ(socket->Bind(port), "");
    for (const char* bytes : {"a", "b", "lost with the close"})
        ASSERT_TRUE(peer->Send(At(port), bytes));
    ASSERT_TRUE(Until([&] { return heard == "ab"; }));
    for (const char* bytes : {"c", "lost with the socket"})
        ASSERT_TRUE(peer->Send(At(next_port), bytes));
    ASSERT_TRUE(Until([&] { return !socket; }));
    RunForAWhile();
    EXPECT_EQ(heard, "abc");
}

INSTANTIATE_TEST_SUITE_P(Asio, DatagramContract,
                         testing::Values(&Make<DatagramRig, AsioDatagrams>));
INSTANTIATE_TEST_SUITE_P(Simulated, DatagramContract,
                         testing::Values(&Make<DatagramRig, SimulatedDatagrams>));

} // namespace
} // namespace tarnex
