#include "mail/server_address.h"
#include "mail/smtp_dialogue.h"
#include "tests/mail/mail_fixture.h"

namespace tarnex {
namespace {

using MailDialogue = MailFixture;

TEST_F(MailDialogue, WithoutLogInEveryLineAtItsInstantAndByteForByte) {
    mail.dSetEmailFifo(u"2024-05-06 设备1警报€");
    clock.RunFor(4999ms);
    EXPECT_TRUE(tcp.Connections.empty());
    clock.RunFor(5s);
    const std::string text = "2024-05-06 \xC9\xE8\xB1\xB8"
                             "1\xBE\xAF\xB1\xA8\x80";
    EXPECT_EQ(Sent(),
              (std::vector<std::string>{
                  "5020:HELO unit@site.example\r\n",
                  "5030:MAIL FROM:unit@site.example\r\n",
                  "5040:RCPT TO:staff@site.example\r\n",
                  "5050:DATA\r\n",
                  "5060:From:Tarnex K Serial <unit@site.example>\r\n",
                  "5060:To: <staff@site.example>\r\n",
                  "5060:Tarnex K Serial:http://tarnex.example\r\nSubject: Tarnex K Serial : " +
                      text + "\r\n\r\n",
                  "5060:" + text + "\r\n\r\n\r\n",
                  "5060:.\r\n",
                  "5070:QUIT\r\n",
              }));
    EXPECT_EQ(statuses, (std::vector<Text>{u"试图与服务器连接", u"登陆服务器", u"接收人邮件地址",
                                           u"邮件发送之中...", u"获取邮件内容", u"邮件送完毕",
                                           u"邮件成功发送!!!"}));
    EXPECT_EQ(tcp.Open, 0) << "221 closes the connection";
    EXPECT_TRUE(said.empty());
}

TEST_F(MailDialogue, LogInAfterHeloWithTrimmedUserAndUntouchedPassword) {
    Set(u"smtp.example:2525", u"1", u" 张三 ", u" pass ");
    sink.Account = {"\xD5\xC5\xC8\xFD", " pass "};
    tcp.Serve("smtp.example", 2525, sink);
    Mail(u"x");
    auto sent = Sent();
    sent.resize(5);
    EXPECT_EQ(sent,
              (std::vector<std::string>{"5020:HELO unit@site.example\r\n", "5030:AUTH LOGIN\r\n",
                                        "5040:1cXI/Q==\r\n", "5050:IHBhc3Mg\r\n",
                                        "5060:MAIL FROM:unit@site.example\r\n"}));
    statuses.resize(6);
    EXPECT_EQ(statuses, (std::vector<Text>{u"试图与服务器连接", u"登陆服务器", u"正在校验用户名",
                                           u"校验用户密码", u"发送人邮件地址", u"接收人邮件地址"}));
}

TEST_F(MailDialogue, LineBreaksStayInTheBodyAndInjectNothingElsewhere) {
    Mail(u"one\r\n.\r\nBcc: a@b");
    ASSERT_EQ(tcp.Sent.size(), 10u);
    EXPECT_TRUE(tcp.Sent[6].bytes.ends_with("Tarnex K Serial : one  .  Bcc: a@b\r\n\r\n"));
    EXPECT_EQ(tcp.Sent[7].bytes, "one\r\n.\r\nBcc: a@b\r\n\r\n\r\n");
    // A line of one dot ends the mail early.
    EXPECT_TRUE(sink.Mails.at(0).content.ends_with("\r\n\r\none\r\n"));
    EXPECT_EQ(tcp.Open, 0);

    tcp.Sent.clear();
    mail.Send({.server = u"smtp.example",
               .from = u"a@b\r\nRSET",
               .to = u"c@d\r\nDATA",
               .user = {},
               .password = {},
               .subject = {},
               .body = {}});
    clock.RunFor(1s);
    for (const auto& send : tcp.Sent)
        EXPECT_EQ(send.bytes.find("\r\n"), send.bytes.size() - 2) << send.bytes;
    EXPECT_EQ(tcp.Sent.at(1).bytes, "MAIL FROM:a@b  RSET\r\n");
}

TEST_F(MailDialogue, EachPacketIsOneReplyAndItsCodeIsNotComparedWithTheStep) {
    sink.Faults[MailStep::kGreeting] = MailFault::AcceptIn({"354-a\r\n", "354 b\r\n"});
    Mail(u"x");
    auto sent = Sent();
    sent.resize(2);
    EXPECT_EQ(sent, (std::vector<std::string>{"5020:HELO unit@site.example\r\n",
                                              "5020:MAIL FROM:unit@site.example\r\n"}));
    sink.Faults = {{MailStep::kHelo, MailFault::AcceptIn({"250-a\r\n250-b\r\n250 c\r\n"})}};
    Mail(u"y");
    EXPECT_EQ(Arrived().back(), "y");
}

TEST_F(MailDialogue, AServerThatGoesOnAcceptingIsLeftAtTheLastStep) {
    for (const auto& row : {std::pair(MailStep::kGreeting, MailFault::TalkEndlessly("250 x\r\n")),
                            {MailStep::kQuit, MailFault::Refuse("250 and what else?")}}) {
        sink.Faults = {row};
        Mail(u"x", 9s);
        EXPECT_EQ(statuses.back(), u"待命之中...");
        EXPECT_EQ(tcp.Open, 0);
        EXPECT_EQ(mail.Status().step, 6);
        statuses.clear();
    }
}

TEST_F(MailDialogue, ButtonsOfTheWindow) {
    form.Command1.Click();
    clock.RunFor(6s);
    form.TxtMessage1.SetValue(u"by hand");
    form.CmdSend.Click();
    clock.RunFor(1s);
    mail.dSetEmailFifo(u"lost with the form");
    EXPECT_TRUE(clock.RunUntil([this] { return mail.Status().in_flight; }, 5s));
    form.SetVisible(true);
    form.cmdExit.Click();
    EXPECT_FALSE(form.Visible());
    clock.RunFor(1min);
    Mail(u"loads it again");
    form.SetVisible(true);
    form.Close(); // hides only
    EXPECT_FALSE(form.Visible());
    Mail(u"still here");
    EXPECT_EQ(Arrived(), (std::vector<std::string>{"Test msg.08:00:00", "by hand", "loads it again",
                                                   "still here"}));
    mail.Timers().StopAll();
    Mail(u"stopped", 1h);
    EXPECT_EQ(mail.Status().queued, 1u);
}

TEST(Base64, StandardVectorsAndHighBytes) {
    const std::pair<std::string, std::string> rows[] = {
        {"", ""}, {"a", "YQ=="}, {"ab", "YWI="}, {"abc", "YWJj"}, {"\xFB\xFF\xFE", "+//+"}};
    for (const auto& [bytes, text] : rows)
        EXPECT_EQ(Base64Encode(bytes), text);
}

TEST(ServerAddress, HostAndPort) {
    for (const auto& [text, host, port] : {std::tuple(u"smtp.example", u"smtp.example", 25),
                                           {u" h : 1 ", u"h", 1},
                                           {u"h:65535", u"h", 65535}}) {
        const ServerAddress address = ParseServerAddress(text).value();
        EXPECT_EQ(address.host, host);
        EXPECT_EQ(address.port, port);
    }
    for (const TextView none : {u"h:65536", u"h:0", u"h:", u"h:25x", u"h:2.5", u"h:-1",
                                u"h:99999999999999999999", u"h:25:26", u":25", u" ", u""})
        EXPECT_FALSE(ParseServerAddress(none)) << ToUtf8(none);
}

} // namespace
} // namespace tarnex
