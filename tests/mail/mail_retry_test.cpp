#include "tests/mail/mail_fixture.h"

namespace tarnex {
namespace {

using MailRetry = MailFixture;

struct FaultRow {
    const char* name;
    MailFault fault;
    bool closes; // the sender leaves, or is left, at once
};

const FaultRow kFaultRows[] = {
    {"refusal", MailFault::Refuse("550 no"), true},
    {"close", MailFault::Close(), true},
    {"silence", MailFault::Silence(), false},
    {"empty line", MailFault::AcceptIn({"\r\n"}), true},
    {"one character", MailFault::AcceptIn({"2"}), true},
    {"two characters", MailFault::AcceptIn({"25"}), true},
    {"NUL bytes", MailFault::AcceptIn({std::string("250\0", 4).insert(0, 1, '\0')}), true},
    {"endless noise", MailFault::TalkEndlessly(std::string(10000, 'x')), true},
};

TEST_F(MailRetry, EveryFaultBeforeTheContentIsAskedForEndsInANewAttempt) {
    sink.Account = {"alarm", " pass "};
    // What to check, by step refused.
    const std::string server = "\"mail-server\"", user = "\"mail-user\"", from = "\"mail-from\"",
                      advised[] = {server, server, user, user, user, from, "\"mail-to\"", server};
    for (int step = 0; step <= int(MailStep::kData); ++step) {
        for (const FaultRow& row : kFaultRows) {
            SCOPED_TRACE(testing::Message() << "step " << step << ", " << row.name);
            Set(u"smtp.example", u"1");
            clock.RunFor(20s - clock.Now() % 20s); // the last dialogue is long over
            const Duration start = clock.Now();
            tcp.Connections.clear();
            sink.Mails.clear();
            said.clear();
            const auto failed = mail.Status().failed_attempts;
            sink.Faults = {{MailStep(step), row.fault}};
            mail.dSetEmailFifo(u"x");
            clock.RunTo(start + 6s);
            EXPECT_EQ(tcp.Open, row.closes ? 0 : 1);
            EXPECT_EQ(Contains(form.Problem.Value(), u"：550 no"), &row == kFaultRows);
            sink.Faults.clear();
            clock.RunTo(start + 25s - 1ms);
            EXPECT_EQ(tcp.Connections.size(), 1u);
            clock.RunTo(start + 30s);
            EXPECT_EQ(tcp.Connections.at(1).at, start + 25s);
            EXPECT_EQ(Arrived(), std::vector<std::string>{"x"});
            EXPECT_EQ(mail.Status().failed_attempts, failed + 1);
            ASSERT_EQ(said.size(), 2u) << "one line when it fails, one when it works again";
            EXPECT_TRUE(&row != kFaultRows || said[0].find(advised[step]) != said[0].npos);
        }
    }
}

TEST_F(MailRetry, AMailIsDoneOnceItsContentIsSentWhateverTheServerSays) {
    for (const FaultRow& row : kFaultRows) {
        SCOPED_TRACE(row.name);
        const auto before = mail.Status();
        sink.Faults = {{MailStep::kContent, row.fault}};
        Mail(u"x", 2min);
        EXPECT_EQ(mail.Status().sent, before.sent + 1);
        EXPECT_EQ(mail.Status().failed_attempts, before.failed_attempts + (row.closes ? 1 : 0));
    }
    ASSERT_EQ(said.size(), 1u);
    EXPECT_NE(said[0].find("\"550 no\" to the content"), std::string::npos) << said[0];

    for (const FaultRow& row : kFaultRows) {
        SCOPED_TRACE(row.name);
        sink.Faults = {{MailStep::kQuit, row.fault}};
        Mail(u"x", 2min);
        EXPECT_EQ(said.size(), 2u) << "QUIT may be answered in any way";
        EXPECT_FALSE(mail.Status().failing);
    }
}

TEST_F(MailRetry, PatienceIsCountedFromTheLastAcceptedReply) {
    tcp.Delay = 4s;
    sink.Faults[MailStep::kHelo] = MailFault::Silence();
    mail.dSetEmailFifo(u"x");
    clock.RunTo(30s - 1ms); // greeted at 13 s, ticks at 15, 20, 25 and 30 s
    EXPECT_EQ(tcp.Connections.size(), 1u);
    clock.RunTo(30s);
    EXPECT_EQ(tcp.Connections.size(), 2u);
    EXPECT_EQ(form.Text1.Value(), u"3");
    EXPECT_EQ(mail.Status().last_problem,
              "server \"smtp.example\": no answer in time to HELO or the password");
    EXPECT_EQ(form.Problem.Value(), u"08:00:30 服务器没有及时应答：HELO或密码");
}

TEST_F(MailRetry, AFailingMailGoesBehindTheOthers) {
    tcp.Dead = true;
    for (const TextView text : {u"a", u"b", u"c"})
        mail.dSetEmailFifo(Text(text));
    Text order;
    for (const Duration instant : {5s, 25s, 45s, 65s}) {
        clock.RunTo(instant);
        order += form.TxtMessage1.Value();
    }
    EXPECT_EQ(order, u"abca");
    EXPECT_EQ(tcp.Connections.size(), 4u);
    EXPECT_EQ(tcp.Open, 1) << "each attempt closes the one before";
}

TEST_F(MailRetry, AFullQueueKeepsTheNewest400) {
    for (int i = 1; i <= 400; ++i)
        mail.dSetEmailFifo(i == 2 ? u"NoData" : ToText(i)); // which counts as an empty queue
    EXPECT_EQ(mail.Status().dropped, 0u);
    mail.dSetEmailFifo(u"401");
    EXPECT_EQ(mail.Status().dropped, 1u);
    clock.RunFor(5s);
    EXPECT_TRUE(tcp.Connections.empty());
    EXPECT_EQ(form.Text1.Value(), u"-1");
    clock.RunFor(401 * 5s); // one mail a tick
    int next = 3;
    for (const std::string& arrived : Arrived())
        ASSERT_EQ(arrived, std::to_string(next++));
    EXPECT_EQ(next, 402);
    EXPECT_EQ(form.Text1.Value(), u"-1");
}

TEST_F(MailRetry, ChangedSettingsHoldFromTheNextMailOn) {
    MailSink other;
    other.Account = {"alarm", "new"};
    tcp.Serve("other.example", 465, other);
    mail.dSetEmailFifo(u"first");
    mail.dSetEmailFifo(u"second");
    clock.RunTo(5030ms);
    Set(u"other.example:465", u"1", u"alarm", u"new");
    clock.RunTo(11s);
    EXPECT_EQ(Arrived(), std::vector<std::string>{"first"});
    EXPECT_TRUE(other.Mails.at(0).logged_in);
}

TEST_F(MailRetry, WrongSettingsAreToldAndTriedAgain) {
    Set(u"smtp.example:smtp");
    Mail(u"x", 20s);
    EXPECT_TRUE(tcp.Connections.empty());
    EXPECT_NE(said.at(0).find("\"smtp.example:smtp\": it names no host, or a port"),
              std::string::npos);
    Set(u"smtp.example");
    clock.RunTo(26s);
    EXPECT_EQ(Arrived(), std::vector<std::string>{"x"});

    sink.Account = {"alarm", "?"}; // what the code page does not have is not sent mutilated
    mail.Send({.server = u"smtp.example",
               .from = u"a@b",
               .to = u"c@d",
               .user = u"alarm",
               .password = u"\xD83D\xDE00",
               .subject = {},
               .body = {}});
    clock.RunFor(1s);
    EXPECT_EQ(tcp.Open, 0);
    EXPECT_NE(said.back().find("characters that cannot be sent"), std::string::npos);
}

TEST_F(MailRetry, OperatorsAreToldInOnePrintableLine) {
    sink.Faults[MailStep::kRcptTo] =
        MailFault::Refuse("550\x07 \xCE\xDE\xD3\xC3\xBB\xA7 " + std::string(300, 'x') + "\r\nmore");
    Mail(u"x", 1h);
    ASSERT_EQ(said.size(), 1u);
    EXPECT_EQ(
        said[0],
        "Mail cannot be sent: server \"smtp.example\": it answered \"550  无用户 " +
            std::string(71, 'x') +
            "\" to RCPT TO. Check the address of the recipient (setting \"mail-to\"). A mail is "
            "tried again until its content was handed over.");
    Set(u"smtp.example:26"); // nobody answers there: another trouble after a change
    clock.RunFor(1min);
    EXPECT_EQ(said.size(), 2u);
    sink.Faults.clear();
    Set(u"smtp.example");
    clock.RunFor(1min);
    EXPECT_EQ(said.back(), "Mail works again.");
    EXPECT_EQ(form.Problem.Value(), u"");
}

} // namespace
} // namespace tarnex
