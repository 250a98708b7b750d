#include "mail/mail_settings.h"

namespace tarnex {

MailSettings ReadMailSettings(const MyIniFile& ini) {
    // One snapshot, so that a server never meets the password of another one.
    const auto document = ini.Snapshot();
    return {
        .MailEnabled = document->Get(u"Check", u"Check1(39)") == u"1",
        .MailAuth = document->Get(u"Check", u"Check1(40)") == u"1",
        .SmtpServer = Text(document->Get(u"Text", u"Text1(29)")),
        .SmtpUser = Text(document->Get(u"Text", u"Text1(30)")),
        .SmtpPassword = Text(document->Get(u"Text", u"Text1(31)")),
        .MailFrom = Text(document->Get(u"Text", u"Text1(58)")),
        .MailTo = Text(document->Get(u"Text", u"Text1(59)")),
    };
}

} // namespace tarnex
