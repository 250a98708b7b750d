#pragma once

#include "platform/serial_port.h"
#include "platform/text.h"

#include <array>
#include <cstdint>

namespace tarnex {

// The settings as the last load left them.
struct Settings {
    bool ForwardFeeSMS = false;        // strangers' messages about fees are forwarded
    Text LogPath;                      // of the log database; empty: none
    std::int16_t SendCount = 0;        // times each notification is queued for SMS
    Text NotifyMode;                   // "SMS", "Email" or "S+E": how link events go out
    bool SMSNotifyOn = false;          // link events may go out by SMS
    bool EmailNotifyOn = false;        // link events may go out by mail
    bool AutoSearchOff = false;        // the device link is switched off
    bool SwitchCheck42 = false;        // notifications go to the first number
    bool SwitchCheck43 = false;        // notifications go to the second number
    bool SendAgain = false;            // what a new start has dropped is queued again
    std::int16_t HistorySize = 0;      // of the history, at most; MB; 0: the usual size
    bool QuietTimeOn = false;          // the weekly SMS quiet time is in force
    std::array<bool, 7> QuietDay{};    // 0 Sunday to 6 Saturday
    std::array<Text, 14> QuietTimes{}; // start (2d) and end (2d + 1) of weekday d
    std::array<bool, 5> LinkEnabled{}; // link i may be sent to, if link 0 may
    friend bool operator==(const Settings&, const Settings&) = default;
};

// The mail settings of one moment.
struct MailSettings {
    bool MailAuth = false; // log in with AUTH LOGIN
    Text SmtpServer;       // host, or host ":" port
    Text SmtpUser;
    Text SmtpPassword;
    Text MailFrom; // sender address
    Text MailTo;   // recipient address
    friend bool operator==(const MailSettings&, const MailSettings&) = default;
};

// What is read once, when the program starts; a change takes effect with the next start.
struct StartSettings {
    SerialPaths device_paths;               // "" where the default holds
    std::string bind_address = "127.0.0.1"; // of the control-link sockets
    std::string code_page = "GBK";          // of the settings file, datagrams, mails and lines
    friend bool operator==(const StartSettings&, const StartSettings&) = default;
};

// What one reading of the file says, and its two run gates.
struct LoadedSettings {
    Settings settings;
    MailSettings mail;
    StartSettings start;
    bool enabled = true;  // Service/Enable is not "Disable"
    bool allowed = false; // Check1(13) is "1"
    friend bool operator==(const LoadedSettings&, const LoadedSettings&) = default;
};

} // namespace tarnex
