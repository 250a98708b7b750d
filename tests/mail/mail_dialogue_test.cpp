#include "tests/mail/mail_fixture.h"

namespace tarnex {
namespace {

using MailDialogue = MailFixture;

TEST_F(MailDialogue, WithoutLogInEveryLineAtItsInstantAndByteForByte) {
    mail.dSetEmailFifo(u"2024-05-06 设备1警报€");
    clock.RunFor(4999ms);
    EXPECT_TRUE(network.Connections.empty());
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
    EXPECT_EQ(network.Open, 0) << "221 closes the connection";
    ASSERT_EQ(sink.Mails.size(), 1u);
    EXPECT_FALSE(sink.Mails[0].logged_in);
    EXPECT_EQ(mail.Status().sent, 1u);
    EXPECT_TRUE(lines.empty());
}

TEST_F(MailDialogue, LogInAfterHeloWithTrimmedUserAndUntouchedPassword) {
    Set(u"smtp.example:2525", u"1", u" 张三 ", u" pass ");
    sink.Account = {"\xD5\xC5\xC8\xFD", " pass "};
    network.Serve("smtp.example", 2525, sink);
    mail.dSetEmailFifo(u"x");
    clock.RunFor(6s);
    ASSERT_GE(Sent().size(), 5u);
    EXPECT_EQ(Sent()[0], "5020:HELO unit@site.example\r\n");
    EXPECT_EQ(Sent()[1], "5030:AUTH LOGIN\r\n");
    EXPECT_EQ(Sent()[2], "5040:1cXI/Q==\r\n");
    EXPECT_EQ(Sent()[3], "5050:IHBhc3Mg\r\n");
    EXPECT_EQ(Sent()[4], "5060:MAIL FROM:unit@site.example\r\n");
    ASSERT_EQ(sink.Mails.size(), 1u);
    EXPECT_TRUE(sink.Mails[0].logged_in);
    ASSERT_GE(statuses.size(), 6u);
    EXPECT_EQ(statuses[2], u"正在校验用户名");
    EXPECT_EQ(statuses[3], u"校验用户密码");
    EXPECT_EQ(statuses[4], u"发送人邮件地址");
    EXPECT_EQ(statuses[5], u"接收人邮件地址");
}

TEST_F(MailDialogue, LineBreaksStayInTheBodyAndInjectNothingElsewhere) {
    mail.dSetEmailFifo(u"one\r\nBcc: a@b");
    clock.RunFor(6s);
    ASSERT_EQ(network.Sent.size(), 10u);
    EXPECT_TRUE(
        network.Sent[6].bytes.ends_with("Subject: Tarnex K Serial : one  Bcc: a@b\r\n\r\n"));
    EXPECT_EQ(network.Sent[7].bytes, "one\r\nBcc: a@b\r\n\r\n\r\n");

    network.Sent.clear();
    mail.SendEmail(u"smtp.example", u"a@b\r\nRSET", u"c@d\r\nDATA", u"", u"");
    clock.RunFor(1s);
    for (const auto& send : network.Sent)
        EXPECT_EQ(send.bytes.find("\r\n"), send.bytes.size() - 2) << send.bytes;
    EXPECT_EQ(network.Sent.at(1).bytes, "MAIL FROM:a@b  RSET\r\n");
}

TEST_F(MailDialogue, ALineOfOneDotEndsTheMailEarly) {
    mail.dSetEmailFifo(u"one\r\n.\r\ntwo");
    clock.RunFor(6s);
    ASSERT_EQ(sink.Mails.size(), 1u);
    EXPECT_TRUE(sink.Mails[0].content.ends_with("\r\n\r\none\r\n"));
    EXPECT_EQ(network.Open, 0);
}

TEST_F(MailDialogue, EachPacketIsOneReplyAndItsCodeIsNotComparedWithTheStep) {
    sink.Faults[MailStep::kGreeting] = MailFault::AcceptIn({"354-a\r\n", "354 b\r\n"});
    mail.dSetEmailFifo(u"x");
    clock.RunFor(6s);
    ASSERT_GE(network.Sent.size(), 2u);
    EXPECT_EQ(Sent()[0], "5020:HELO unit@site.example\r\n");
    EXPECT_EQ(Sent()[1], "5020:MAIL FROM:unit@site.example\r\n");

    network.Sent.clear();
    sink.Faults = {{MailStep::kHelo, MailFault::AcceptIn({"250-a\r\n250-b\r\n250 c\r\n"})}};
    mail.dSetEmailFifo(u"y");
    clock.RunFor(6s);
    EXPECT_EQ(network.Sent.size(), 10u);
    EXPECT_EQ(Arrived().back(), "y");
}

TEST_F(MailDialogue, AServerThatGoesOnAcceptingIsLeftAtTheLastStep) {
    const std::pair<MailStep, MailFault> rows[] = {
        {MailStep::kGreeting, MailFault::TalkEndlessly("250 x\r\n")},
        {MailStep::kQuit, MailFault::Refuse("250 and what else?")},
    };
    for (const auto& row : rows) {
        sink.Faults = {row};
        mail.dSetEmailFifo(u"x");
        clock.RunFor(9s);
        EXPECT_EQ(statuses.back(), u"待命之中...");
        EXPECT_EQ(network.Open, 0);
        EXPECT_EQ(mail.Status().step, 6);
        statuses.clear();
    }
}

TEST_F(MailDialogue, ButtonsOfTheWindow) {
    MailForm& window = mail.Window();
    window.Command1.Click();
    clock.RunFor(6s);
    EXPECT_EQ(Arrived(), std::vector<std::string>{"Test msg.08:00:00"});

    window.TxtMessage1.SetValue(u"by hand");
    window.CmdSend.Click();
    clock.RunFor(1s);
    EXPECT_EQ(Arrived().back(), "by hand");

    mail.dSetEmailFifo(u"lost with the form");
    window.SetVisible(true);
    window.cmdExit.Click();
    EXPECT_FALSE(window.Visible());
    clock.RunFor(1min);
    EXPECT_EQ(sink.Mails.size(), 2u);
    mail.dSetEmailFifo(u"loads it again");
    clock.RunFor(6s);
    EXPECT_EQ(Arrived().back(), "loads it again");
    EXPECT_EQ(sink.Mails.size(), 3u);

    window.Close(); // hides only
    mail.dSetEmailFifo(u"still here");
    clock.RunFor(6s);
    EXPECT_EQ(Arrived().back(), "still here");

    mail.Timers().StopAll();
    mail.dSetEmailFifo(u"stopped");
    clock.RunFor(1h);
    EXPECT_EQ(mail.Status().queued, 1u);
}

} // namespace
} // namespace tarnex
