#include "adapters/asio/asio_datagram.h"
#include "programs/send_datagram.h"
#include "tests/adapters/run_until.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(SendDatagram, ReachesWhoListensAndTellsWhenNobodyDoes) {
    AsioLoop loop;
    AsioDatagramSockets sockets(loop, "127.0.0.1");
    std::string heard;
    const auto socket = sockets.Create({[&](const Datagram& datagram) { heard = datagram.bytes; }});
    std::uint16_t port = 47840;
    while (!socket->Bind(port).empty())
        ++port;
    EXPECT_EQ(SendDatagram({"127.0.0.1", port}, "hello"), "");
    EXPECT_TRUE(RunUntil(loop, [&] { return heard == "hello"; }));
    socket->Close();
    EXPECT_EQ(SendDatagram({"127.0.0.1", port}, "hello"), "nobody listens there");
    EXPECT_EQ(SendDatagram({"localhost", port}, "x"), "\"localhost\" is not an IPv4 address");
}

} // namespace
} // namespace tarnex
