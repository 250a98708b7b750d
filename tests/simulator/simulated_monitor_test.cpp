#include "simulator/monitor_messages.h"
#include "simulator/simulated_monitor.h"
#include "tests/world.h"

namespace tarnex {
namespace {

using Heard = std::vector<std::string>;

struct MonitorTest : WorldTest {
    MonitorTest() { service->Bind(7842); }
    void Tell(std::string_view bytes) {
        service->Send(peer, bytes);
        clock.RunFor(0ms);
    }

    Endpoint peer;
    Heard heard; // "second:bytes" for what comes to the service on the third link
    std::unique_ptr<DatagramSocket> service = network.Create({[&](const Datagram& datagram) {
        peer = datagram.from;
        heard.push_back(std::to_string(clock.Now() / 1s) + ":" + datagram.bytes);
    }});
    Monitor monitor{clock, network, code_page, {.link = 3, .name = u"中A"}};
};

TEST_F(MonitorTest, GreetsSendsHeartbeatsAndGreetsASilentServiceAgain) {
    const std::string greeting = "txHelloNx\xD6\xD0\x41";
    ASSERT_EQ(monitor.Start(), "");
    clock.RunTo(22s);
    Tell("tx-States4100100");
    clock.RunTo(57s);
    EXPECT_EQ(heard, (Heard{"0:" + greeting, "10:txHeartSv", "20:txHeartSv", "30:txHeartSv",
                            "40:txHeartSv", "50:txHeartSv", "57:" + greeting}));
    Tell("tx-States4111011"); // it has forgotten this link
    EXPECT_EQ(heard.back(), "57:" + greeting);
    EXPECT_EQ(heard.size(), 8u);
    monitor.Stop();
    clock.RunFor(10min);
    EXPECT_EQ(heard.size(), 8u);
}

TEST_F(MonitorTest, HearsTheServiceAndNoOthers) {
    std::vector<Text> told;
    monitor.OnMessage([&](const Text& message) { told.push_back(message); });
    monitor.Start();
    clock.RunTo(5s);
    const auto stranger = network.Create({[](const Datagram&) {}});
    stranger->Bind(0);
    stranger->Send(peer, "tx-States");
    Tell("tx-Serial\xD6\xD0");
    EXPECT_EQ(told, std::vector<Text>{u"tx-Serial中"});
}

TEST(LinkCodes, AreToldInPlainWords) {
    for (const auto& [code, words] : {
             std::pair{u"tx-States4110100", "heartbeat of the service: signal level 4 of 5, unit "
                                            "online, monitors on link 1, 3"},
             {u"tx-States1000000", "heartbeat of the service: signal level 1 of 5, unit not "
                                   "online, monitors on no link"},
             {u"txControl1301", "command by SMS: restart or start web service on machine 1"},
             {u"txControl2902", "command by SMS: shut down the whole machine on machine 2"},
             {u"txControl13", "command by SMS: not a command"},
             {u"ACOk", "mains power back"},
             {u"tx", "unknown code"},
         })
        EXPECT_EQ(DescribeCode(code), words);
}

TEST(EventWords, AreGivenAsWordsOrNumbers) {
    EXPECT_EQ(NumberOf(EventServices(), "web"), 30);
    EXPECT_EQ(NumberOf(EventServices(), "07"), 7);
    EXPECT_EQ(NumberOf(EventServices(), "100"), std::nullopt);
    EXPECT_EQ(NumberOf(EventServices(), "-1"), std::nullopt);
    EXPECT_EQ(NumberOf(EventStates(), "1x"), std::nullopt);
}

} // namespace
} // namespace tarnex
