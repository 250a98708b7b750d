#include "service/mail_window.h"

#include "platform/calendar_text.h"

namespace tarnex {

MailWindow::MailWindow(MailSender& sender, Clock& clock)
    : Form("MailSender", u"邮件发送"), sender_(sender) {
    TxtMessage1.SetValue(u"This is a test message from Tarnex K Serial.\r\n");
    CmdSend.OnClick([this] {
        sender_.Send({.server = txtserver.Value(),
                      .from = txtfrom.Value(),
                      .to = getaddress.Value(),
                      .user = user.Value(),
                      .password = txtpwa.Value(),
                      .subject = subject.Value(),
                      .body = TxtMessage1.Value()});
    });
    Command1.OnClick(
        [this, &clock] { sender_.dSetEmailFifo(u"Test msg." + TimeText(clock.Calendar())); });
    cmdExit.OnClick([this] {
        sender_.Unload();
        SetVisible(false);
    });
    OnClose([this] { SetVisible(false); });
    sender_.SetDisplay(this);
}

void MailWindow::ShowMail(const MailParts& mail) {
    txtserver.SetValue(mail.server);
    txtfrom.SetValue(mail.from);
    getaddress.SetValue(mail.to);
    user.SetValue(mail.user);
    txtpwa.SetValue(mail.password);
    subject.SetValue(mail.subject);
    TxtMessage1.SetValue(mail.body);
}

} // namespace tarnex
