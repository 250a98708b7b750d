#include "simulator/mail_sink.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

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
