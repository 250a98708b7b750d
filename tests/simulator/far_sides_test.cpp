#include "simulator/mail_sink.h"
#include "simulator/monitor_messages.h"
#include "simulator/simulated_monitor.h"
#include "tests/world.h"

#include <gtest/gtest.h>

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
    Monitor monitor{clock, network, code_page, {.link = 2, .name = u"中A"}};
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
                                            "online, monitors on link 0, 2"},
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

// The first three characters of each answer to the lines, one line a call.
std::string Codes(MailSink& sink, const std::vector<std::string>& lines) {
    MailSink::Session session(sink);
    session.Connected();
    std::string codes;
    for (const std::string& line : lines)
        for (const std::string& packet : session.Receive(line + "\r\n").packets)
            codes += packet.substr(0, 3) + " ";
    return codes;
}

TEST(MailSink, KeepsToTheOrderOfCommands) {
    MailSink sink;
    EXPECT_EQ(Codes(sink, {"MAIL FROM:a@b", "DATA", "XYZ", "MAILFROM:a@b", "AUTH LOGIN", "HELO"}),
              "503 503 500 500 502 501 ");
    EXPECT_EQ(Codes(sink, {"HELO x", "RCPT TO:a@b", "MAIL FROM:a", "MAIL FROM:a@b c@d",
                           "mail from: <a@b>", "MAIL FROM:a@b", "DATA", "RCPT TO:c@d",
                           "RCPT TO:<e@f>", "DATA"}),
              "250 503 501 501 250 503 503 250 250 354 ");
    EXPECT_TRUE(sink.Mails.empty());
}

TEST(MailSink, WantsTheRightLogInWhenItHasAnAccount) {
    MailSink sink;
    sink.Account = {"ab", "c"};
    EXPECT_EQ(Codes(sink, {"AUTH LOGIN", "HELO x", "MAIL FROM:a@b", "AUTH PLAIN", "AUTH LOGIN",
                           "YWI=", "Yw==", "MAIL FROM:a@b"}),
              "503 250 530 504 334 334 235 250 ");
    EXPECT_EQ(Codes(sink, {"HELO x", "AUTH LOGIN", "YWI=", "YQ==", "MAIL FROM:a@b"}),
              "250 334 334 535 530 ");
    EXPECT_EQ(Codes(sink, {"HELO x", "AUTH LOGIN", "*", "AUTH LOGIN", "YWI=", "Y"}),
              "250 334 501 334 334 501 ");
}

TEST(MailSink, PutsTogetherWhatArrivesByteByByte) {
    MailSink sink;
    MailSink::Session session(sink);
    session.Connected();
    bool closed = false;
    for (const char byte : std::string("HELO x\r\nMAIL FROM:a@b\r\nRCPT TO:<c@d>\r\nDATA\r\n"
                                       "one\n\r\r\n..two\r\n.\r\nQUIT\r\n")) {
        EXPECT_FALSE(closed);
        closed = session.Receive({&byte, 1}).close;
    }
    EXPECT_TRUE(closed);
    ASSERT_EQ(sink.Mails.size(), 1u);
    EXPECT_EQ(sink.Mails[0].from, "a@b");
    EXPECT_EQ(sink.Mails[0].to, std::vector<std::string>{"c@d"});
    EXPECT_EQ(sink.Mails[0].content, "one\n\r\r\n.two\r\n");
}

TEST(MailSink, DoesNotGrowWithoutEnd) {
    MailSink sink;
    MailSink::Session session(sink);
    const std::string noise(64 * 1024, 'x');
    EXPECT_FALSE(session.Receive(noise).close);
    EXPECT_TRUE(session.Receive("x").close);
}

} // namespace
} // namespace tarnex
