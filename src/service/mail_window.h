#pragma once

#include "mail/mail_sender.h"
#include "ui/form.h"
#include "ui/layout.h"

namespace tarnex {

// The mail sender's window: the mail in flight, how far it has come, and a way to send one by hand.
class MailWindow : public Form, private MailDisplay {
  public:
    // Both must outlive the window. Mails go on without it.
    MailWindow(MailSender& sender, Clock& clock);
    ~MailWindow() override { sender_.SetDisplay(nullptr); }

    TextBox txtserver{*this, "txtserver"};     // host, or host ":" port
    TextBox txtfrom{*this, "txtfrom"};         // sender address
    TextBox getaddress{*this, "getaddress"};   // recipient address
    TextBox user{*this, "user"};               // account; empty: no log-in
    TextBox txtpwa{*this, "txtpwa"};           // password
    TextBox subject{*this, "subject"};         // of the mail
    TextBox TxtMessage1{*this, "TxtMessage1"}; // body
    TextBox txtMessage{*this, "txtMessage"};   // not part of any mail
    Label StatusTxt{*this, "StatusTxt"};       // progress
    TextBox Problem{*this, "Problem"}; // when and why the last attempt failed; "" once mails work
    TextBox Text1{*this, "Text1"};     // the watchdog's count at the last tick
    Button CmdSend{*this, "CmdSend", u"发送"};
    Button Command1{*this, "Command1", u"Send2Fifo"};
    Button cmdExit{*this, "cmdExit", u"退出"};

  private:
    void ShowMail(const MailParts& mail) override;
    void ShowProgress(TextView progress) override { StatusTxt.SetCaption(Text(progress)); }
    void ShowProblem(const Text& problem) override { Problem.SetValue(problem); }
    void ShowTicks(int ticks) override { Text1.SetValue(ToText(ticks)); }

    MailSender& sender_;
};

// Where its controls stand.
Layout MailLayout();

} // namespace tarnex
