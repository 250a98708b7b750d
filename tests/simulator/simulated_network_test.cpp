#include "simulator/simulated_clock.h"
#include "simulator/simulated_network.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

class SimulatedNetworkTest : public testing::Test {
  protected:
    SimulatedClock clock;
    SimulatedNetwork network{clock};
    std::string heard;
    Endpoint from;
    std::unique_ptr<DatagramSocket> receiver = network.Create([&](const Datagram& datagram) {
        heard += datagram.bytes + ";";
        from = datagram.from;
    });
    std::unique_ptr<DatagramSocket> sender = network.Create(
        [&](const Datagram& datagram) { heard += "answer " + datagram.bytes + ";"; });
};

TEST_F(SimulatedNetworkTest, DatagramsArriveInOrderAndCanBeAnswered) {
    ASSERT_EQ(receiver->Bind(7840), "");
    ASSERT_EQ(sender->Bind(0), "");
    sender->Send({"127.0.0.1", 7840}, "a");
    sender->Send({"127.0.0.1", 7840}, "");
    sender->Send({"127.0.0.1", 7841}, "x");
    sender->Send({"192.0.2.1", 7840}, "y");
    EXPECT_EQ(heard, "");
    EXPECT_EQ(receiver->Bind(7840), ""); // bound already: loses nothing
    clock.RunFor(0ms);
    EXPECT_EQ(heard, "a;;");
    receiver->Send(from, "b");
    clock.RunFor(0ms);
    EXPECT_EQ(heard, "a;;answer b;");
}

TEST_F(SimulatedNetworkTest, APortBelongsToOne) {
    network.OccupyPort(7840);
    EXPECT_EQ(receiver->Bind(7840), "address already in use");
    EXPECT_FALSE(receiver->Bound());
    network.FreePort(7840);
    EXPECT_EQ(receiver->Bind(7840), "");
    EXPECT_NE(sender->Bind(7840), "");
    receiver.reset();
    EXPECT_EQ(sender->Bind(7840), "");
}

TEST_F(SimulatedNetworkTest, WhatWaitsAtAClosedSocketIsLost) {
    receiver->Bind(7840);
    sender->Bind(0);
    sender->Send({"127.0.0.1", 7840}, "a");
    receiver->Close();
    receiver->Bind(7840);
    clock.RunFor(0ms);
    sender->Close();
    sender->Send({"127.0.0.1", 7840}, "b");
    clock.RunFor(0ms);
    EXPECT_EQ(heard, "");
}

} // namespace
} // namespace tarnex
