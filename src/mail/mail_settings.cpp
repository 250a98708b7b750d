#include "mail/mail_settings.h"

namespace tarnex {

MailSettings ReadMailSettings(const IniDocument& file) {
    return {
        .MailEnabled = file.Get(u"Check", u"Check1(39)") == u"1",
        .MailAuth = file.Get(u"Check", u"Check1(40)") == u"1",
        .SmtpServer = Text(file.Get(u"Text", u"Text1(29)")),
        .SmtpUser = Text(file.Get(u"Text", u"Text1(30)")),
        .SmtpPassword = Text(file.Get(u"Text", u"Text1(31)")),
        .MailFrom = Text(file.Get(u"Text", u"Text1(58)")),
        .MailTo = Text(file.Get(u"Text", u"Text1(59)")),
    };
}

} // namespace tarnex
