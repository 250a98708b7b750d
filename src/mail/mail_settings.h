#pragma once

#include "platform/text.h"
#include "settings/my_ini_file.h"

namespace tarnex {

// The mail settings of one moment.
struct MailSettings {
    bool MailEnabled = false; // whoever queues mails goes by it; mails that are queued are sent
    bool MailAuth = false;    // log in with AUTH LOGIN
    Text SmtpServer;          // host, or host ":" port
    Text SmtpUser;
    Text SmtpPassword;
    Text MailFrom; // sender address
    Text MailTo;   // recipient address
    friend bool operator==(const MailSettings&, const MailSettings&) = default;
};

MailSettings ReadMailSettings(const IniDocument& file);
// Of one moment, so that a server never meets the password of another one.
inline MailSettings ReadMailSettings(const MyIniFile& ini) {
    return ReadMailSettings(*ini.Snapshot());
}

} // namespace tarnex
