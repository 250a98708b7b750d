#pragma once

#include "history/message_ledger.h"
#include "service/mail_window.h"
#include "tests/world.h"

namespace tarnex {

// A mail sender whose settings name the server smtp.example, where a sink listens.
struct MailFixture : WorldTest, FormObserver {
    MailFixture() {
        tcp.Serve("smtp.example", 25, sink);
        Set(u"smtp.example");
        form.Observe(this);
    }

    // Everything that was queued has a fate, or waits; at most one for the server's word.
    ~MailFixture() override {
        const MailStatus status = mail.Status();
        EXPECT_LE(messages.Waiting().size() - status.queued - status.in_flight, 1u);
    }

    // Settings with that server; user and password are there, used only when auth is "1".
    void Set(TextView server, TextView auth = u"0", TextView user = u" alarm ",
             TextView password = u" pass ") {
        store.SetContent(code_page.Encode(
            Text(u"[Check]\r\nCheck1(39)=1\r\nCheck1(40)=").append(auth) +
            u"\r\n[Text]\r\nText1(29)=" + Text(server) + u"\r\nText1(30)=" + Text(user) +
            u"\r\nText1(31)=" + Text(password) +
            u"\r\nText1(58)=unit@site.example\r\nText1(59)=staff@site.example\r\n"));
    }
    void Mail(TextView text, Duration time = 6s) {
        mail.dSetEmailFifo(Text(text));
        clock.RunFor(time);
    }
    // Every send since the start as "instant in ms:bytes".
    std::vector<std::string> Sent() const {
        std::vector<std::string> all;
        for (const auto& send : tcp.Sent)
            all.push_back(std::to_string(send.at.count()) + ":" + send.bytes);
        return all;
    }
    // The bodies of the mails that arrived, in order, up to their first line end.
    std::vector<std::string> Arrived() const {
        std::vector<std::string> all;
        for (const ReceivedMail& received : sink.Mails) {
            const auto body = received.content.find("\r\n\r\n") + 4;
            all.push_back(
                received.content.substr(body, received.content.find("\r\n", body) - body));
        }
        return all;
    }
    void ControlChanged(Control& control) override {
        if (&control == &form.StatusTxt)
            statuses.push_back(form.StatusTxt.Caption());
    }
    void FormChanged() override {}

    MailSink sink;
    SimulatedHistory history;
    HistoryWriter writer{clock, history, notices};
    MessageLedger messages{writer, [](MessageWay, TextView number) { return Text(number); }};
    MailSender mail{clock, tcp, ini, code_page, notices, messages};
    MailWindow form{mail, clock};
    std::vector<Text> statuses; // every text of StatusTxt
};

} // namespace tarnex
