#pragma once

#include "ui/form.h"

namespace tarnex {

// The mail sender's window: the parameters of the mail in flight, and how far it has come.
class MailForm : public Form {
  public:
    MailForm() : Form("MailSender", u"邮件发送") {
        TxtMessage1.SetValue(u"This is a test message from Tarnex K Serial.\r\n");
    }

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
};

} // namespace tarnex
