#include "adapters/system/iconv_code_page.h"
#include "simulator/link_codes.h"
#include "simulator/simulated_clock.h"
#include "simulator/simulated_monitor.h"
#include "simulator/simulated_network.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

class MonitorTest : public testing::Test {
  protected:
    // "second:bytes" for what comes to the service on the third link.
    void SetUp() override { service->Bind(7842); }
    void Tell(std::string_view bytes) {
        service->Send(peer, bytes);
        clock.RunFor(0ms);
    }

    SimulatedClock clock;
    SimulatedNetwork network{clock};
    IconvCodePage gbk{"GBK"};
    Endpoint peer;
    std::vector<std::string> heard;
    std::unique_ptr<DatagramSocket> service = network.Create({[&](const Datagram& datagram) {
        peer = datagram.from;
        heard.push_back(std::to_string(clock.Now() / 1s) + ":" + datagram.bytes);
    }});
    Monitor monitor{clock, network, gbk, {.link = 3, .name = u"中A"}};
    using Heard = std::vector<std::string>;
};

TEST_F(MonitorTest, GreetsSendsHeartbeatsAndGreetsASilentServiceAgain) {
    ASSERT_EQ(monitor.Start(), "");
    clock.RunTo(22s);
    Tell("txYesRigh");
    clock.RunTo(31s);
    EXPECT_EQ(heard, (Heard{"0:txHelloNx\xD6\xD0"
                            "A",
                            "10:txHeartSv", "20:txHeartSv", "30:txHeartSv"}));
    heard.clear();
    clock.RunTo(57s);
    EXPECT_EQ(heard, (Heard{"40:txHeartSv", "50:txHeartSv",
                            "57:txHelloNx\xD6\xD0"
                            "A"}));
    monitor.Stop();
    heard.clear();
    clock.RunFor(10min);
    EXPECT_EQ(heard, Heard{});
}

TEST_F(MonitorTest, GreetsAgainWhenTheServiceHasForgottenItsLink) {
    monitor.Start();
    clock.RunTo(1s);
    Tell("tx-States4100100");
    EXPECT_EQ(heard.size(), 1u);
    Tell("tx-States4111011");
    EXPECT_EQ(heard.size(), 2u);
    EXPECT_TRUE(heard[1].starts_with("1:txHelloNx"));
}

TEST_F(MonitorTest, KeepsAndReportsWhatComesFromTheService) {
    std::vector<Text> told;
    monitor.OnMessage([&](const Text& message) { told.push_back(message); });
    monitor.Start();
    clock.RunTo(5s);
    const auto stranger = network.Create({[](const Datagram&) {}});
    stranger->Bind(0);
    stranger->Send(peer, "tx-States");
    Tell("tx-Serial\xD6\xD0");
    EXPECT_EQ(told, std::vector<Text>{u"tx-Serial中"});
    ASSERT_EQ(monitor.Messages().size(), 1u);
    EXPECT_EQ(monitor.Messages()[0].at, 5s);
    EXPECT_TRUE(monitor.Received(u"tx-Ser"));
    EXPECT_FALSE(monitor.Received(u"tx-States"));
}

TEST_F(MonitorTest, SendsEventsAsRecords) {
    monitor.Start();
    monitor.SendEvent({.machine = 2,
                       .service = 3,
                       .state = 1,
                       .action = 4,
                       .by_sms = true,
                       .by_mail = false,
                       .machine_name = u"srv",
                       .memo = u"98%"});
    clock.RunFor(0ms);
    EXPECT_EQ(heard.back(), "0:txSendSMS2031410srv{[b^k^]}98%");
}

TEST(LinkCodes, AreToldInPlainWords) {
    EXPECT_EQ(DescribeCode(u"tx-States4110100"),
              "heartbeat of the service: signal level 4 of 5, unit online, monitors on link 1, 3");
    EXPECT_EQ(DescribeCode(u"tx-States1000000"), "heartbeat of the service: signal level 1 of 5, "
                                                 "unit not online, monitors on no link");
    EXPECT_EQ(DescribeCode(u"txControl1301"),
              "command by SMS: restart or start web service on machine 1");
    EXPECT_EQ(DescribeCode(u"txControl2902"),
              "command by SMS: shut down the whole machine on machine 2");
    EXPECT_EQ(DescribeCode(u"txControl13"), "command by SMS: not a command");
    EXPECT_EQ(DescribeCode(u"ACOk"), "mains power back");
    EXPECT_EQ(DescribeCode(u"tx"), "unknown code");
}

TEST(EventWords, AreGivenAsWordsOrNumbers) {
    EXPECT_EQ(NumberOf(EventServices(), "web"), 30);
    EXPECT_EQ(NumberOf(EventServices(), "07"), 7);
    EXPECT_EQ(NumberOf(EventServices(), "100"), std::nullopt);
    EXPECT_EQ(NumberOf(EventServices(), "-1"), std::nullopt);
    EXPECT_EQ(NumberOf(EventStates(), "1x"), std::nullopt);
    EXPECT_EQ(NumberOf(EventActions(), ""), std::nullopt);
}

} // namespace
} // namespace tarnex
