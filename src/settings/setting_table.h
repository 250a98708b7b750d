#pragma once

#include "settings/setting.h"

#include <span>

namespace tarnex {

namespace table {

using enum SettingKind;

inline constexpr SettingValues kOnOff{.kind = kSwitch};
inline constexpr SettingValues kOnUnlessZero{.kind = kSwitch, .on_unless_off = true};
inline constexpr SettingValues kEnable{
    .kind = kSwitch, .on = u"Enable", .off = u"Disable", .on_unless_off = true};
inline constexpr SettingValues kDebug{.kind = kSwitch, .on = u"On", .off = u"Off"};
inline constexpr SettingValues kSendCount{.kind = kNumber, .highest = 20};
inline constexpr SettingValues kMegabytes{.kind = kNumber, .lowest = 1, .highest = 10000};
inline constexpr SettingValues kAnyText{.kind = kText};
inline constexpr SettingValues kTelephone{.kind = kPhone};
inline constexpr SettingValues kTimeOfDay{.kind = kTime};
inline constexpr SettingValues kWays{.kind = kChoice, .choices = "SMS|Email|S+E"};
inline constexpr SettingValues kFile{.kind = kPath};
inline constexpr SettingValues kMailServer{.kind = kServer};
inline constexpr SettingValues kAddress{.kind = kMailAddress};
inline constexpr SettingValues kSecret{.kind = kPassword};
inline constexpr SettingValues kBindAddress{.kind = kIpAddress, .default_text = "127.0.0.1"};
inline constexpr SettingValues kCodePages{
    .kind = kChoice, .choices = "GBK|UTF-8", .default_text = "GBK"};
inline constexpr SettingValues kWritten{.kind = kRecord};

inline constexpr std::string_view kReload = "within 10 seconds";
inline constexpr std::string_view kCheck = "at the next check of the unit, about every 5 seconds";
inline constexpr std::string_view kMail = "with the next mail";
inline constexpr std::string_view kReset = "when the service starts, and when it loses the unit";
inline constexpr std::string_view kStart = "at the next start of the service";
inline constexpr std::string_view kByService = "written by the service";

inline void Store(bool& field, const Setting& setting, TextView value) {
    field = IsOn(setting, value);
}
inline void Store(Text& field, const Setting&, TextView value) {
    field = value;
}
inline void Store(std::int16_t& field, const Setting&, TextView value) {
    field = LeadingInt16(value).value_or(field);
}
inline void Store(std::string& field, const Setting&, TextView value) {
    if (const TextView text = Trim(value); !text.empty())
        field = ToUtf8(text);
}

template <typename Field>
LoadedSettings& PartOf(LoadedSettings& to, Field LoadedSettings::*) {
    return to;
}
template <typename Field>
Settings& PartOf(LoadedSettings& to, Field Settings::*) {
    return to.settings;
}
template <typename Field>
MailSettings& PartOf(LoadedSettings& to, Field MailSettings::*) {
    return to.mail;
}
template <typename Field>
StartSettings& PartOf(LoadedSettings& to, Field StartSettings::*) {
    return to.start;
}

// Where the value of a row lands.
template <auto field>
void In(LoadedSettings& to, const Setting& setting, TextView value) {
    Store(PartOf(to, field).*field, setting, value);
}
template <auto fields, std::size_t index>
void At(LoadedSettings& to, const Setting& setting, TextView value) {
    Store((PartOf(to, fields).*fields)[index], setting, value);
}
template <bool Settings::*flag>
void Not(LoadedSettings& to, const Setting& setting, TextView value) {
    to.settings.*flag = !IsOn(setting, value);
}

// clang-format off
inline constexpr Setting kRows[] = {
    {"Running", u"Service", u"Enable", "service-enabled", kEnable, kReload, "whether the service runs",
     "the service may run, if run-allowed is on too", "THE SERVICE ENDS", In<&LoadedSettings::enabled>},
    {"Running", u"Check", u"Check1(13)", "run-allowed", kOnOff, kReload, "permission to run",
     "the service may run", "THE SERVICE ENDS", In<&LoadedSettings::allowed>},
    {"Running", u"Debug", u"DebugMode", "debug-mode", kDebug, kReset, "whether the service tells all it does",
     "every line, datagram and decision is shown or goes to the system's log", "only what needs attention goes to the system's log"},

    {"Unit", u"Check", u"Check1(7)", "unit-link", kOnUnlessZero, kReload, "work with the unit",
     "the unit is searched for and SMS are sent", "the unit is not searched for; no notification by SMS", Not<&Settings::AutoSearchOff>},
    {"Unit", u"Text", u"Text1(34)", "alarm-number-1", kTelephone, kCheck, "first alarm telephone number",
     "{} gets notifications if sms-to-number-1 is on, and commands by SMS", "EVERYBODY MAY COMMAND BY SMS", nullptr, u"TelNo1"},
    {"Unit", u"Text", u"Text1(35)", "alarm-number-2", kTelephone, kCheck, "second alarm telephone number",
     "{} gets notifications if sms-to-number-2 is on, and commands by SMS", "EVERYBODY MAY COMMAND BY SMS", nullptr, u"TelNo2"},
    {"Unit", u"Text", u"Text1(36)", "sms-centre", kTelephone, kCheck, "number of the carrier's SMS service centre",
     "SMS leave through {}", "none; the empty value is sent to the unit at every check", nullptr, u"SMSCenter"},
    {"Unit", u"Combo", u"combo1(5)", "communication-alarm-time", kAnyText, kCheck, "communication alarm time, in the unit's own form (minutes)",
     "the unit raises its alarm {} minutes after the last word of the service", "none; the empty value is sent to the unit at every check", nullptr, u"CommAlarmTime"},
    {"Unit", u"Combo", u"Combo1(6)", "send-count", kSendCount, kCheck, "how often each notification is sent by SMS",
     "each notification is queued {}x for each number", "NO NOTIFICATION BY SMS", In<&Settings::SendCount>, u"SendTimes"},
    {"Unit", u"Check", u"Check1(45)", "communication-alarm", kOnOff, kCheck, "communication alarm of the unit",
     "the unit raises an alarm when the service falls silent", "the unit does not watch the service", nullptr, u"CommAlarmEnable"},
    {"Unit", u"Check", u"Check1(44)", "power-alarm", kOnOff, kCheck, "power alarm of the unit",
     "the unit raises an alarm when its mains power fails", "the unit does not report mains power", nullptr, u"PowrAlarmEnable"},
    {"Unit", u"Text", u"Text1(32)", "unit-name", kAnyText, kCheck, "name of the unit",
     "the unit is called {}", "none; the empty value is sent to the unit at every check", nullptr, u"TarnexName"},
    {"Unit", u"Check", u"Check1(57)", "unit-name-shown", kOnOff, kCheck, "the unit's name on its display",
     "the unit shows its name", "the unit does not show its name", nullptr, u"NameEnable"},
    {"Unit", u"Text", u"Text1(33)", "unit-port", kWritten, kByService, "port of the unit",
     "{} (\"*\": being searched for)", "not known yet"},

    {"Links to monitoring programs", u"Check", u"Check1(8)", "link-0", kOnOff, kReload, "link 0, and the main switch of all links",
     "link 0 is sent to, and links 1 to 4 may be", "ALL FIVE LINKS ARE SILENT", At<&Settings::LinkEnabled, 0>},
    {"Links to monitoring programs", u"Check", u"Check1(9)", "link-1", kOnOff, kReload, "link 1",
     "link 1 is sent to if link-0 is on", "link 1 is not sent to", At<&Settings::LinkEnabled, 1>},
    {"Links to monitoring programs", u"Check", u"Check1(10)", "link-2", kOnOff, kReload, "link 2",
     "link 2 is sent to if link-0 is on", "link 2 is not sent to", At<&Settings::LinkEnabled, 2>},
    {"Links to monitoring programs", u"Check", u"Check1(11)", "link-3", kOnOff, kReload, "link 3",
     "link 3 is sent to if link-0 is on", "link 3 is not sent to", At<&Settings::LinkEnabled, 3>},
    {"Links to monitoring programs", u"Check", u"Check1(12)", "link-4", kOnOff, kReload, "link 4",
     "link 4 is sent to if link-0 is on", "link 4 is not sent to", At<&Settings::LinkEnabled, 4>},

    {"Notifications", u"Check", u"Check1(42)", "sms-to-number-1", kOnOff, kReload, "notifications by SMS to alarm-number-1",
     "notifications go to the first number", "no notifications to the first number", In<&Settings::SwitchCheck42>},
    {"Notifications", u"Check", u"Check1(43)", "sms-to-number-2", kOnOff, kReload, "notifications by SMS to alarm-number-2",
     "notifications go to the second number", "no notifications to the second number", In<&Settings::SwitchCheck43>},
    {"Notifications", u"Check", u"Check1(58)", "forward-fee-sms", kOnOff, kReload, "fee messages of strangers",
     "they are forwarded to both numbers", "they are dropped; those about the balance are forwarded all the same", In<&Settings::ForwardFeeSMS>},
    {"Notifications", u"Alarm", u"AlarmLabel(7)", "link-events-way", kWays, kReload, "how greetings and losses of monitoring programs are reported",
     "they may go by {}, if link-events-by-sms or -by-mail is on", "they are not reported", In<&Settings::NotifyMode>},
    {"Notifications", u"Check", u"Check1(5)", "link-events-by-sms", kOnOff, kReload, "greetings and losses of monitoring programs by SMS",
     "they are reported by SMS if link-events-way is SMS or S+E", "they are not reported by SMS", In<&Settings::SMSNotifyOn>},
    {"Notifications", u"Check", u"Check1(39)", "link-events-by-mail", kOnOff, kReload, "greetings and losses of monitoring programs by mail",
     "they are reported by mail if link-events-way is Email or S+E", "they are not reported by mail", In<&Settings::EmailNotifyOn>},

    {"Quiet time", u"Check", u"Check1(6)", "quiet-time", kOnOff, kReload, "weekly time without notifications by SMS",
     "the days that are on have their quiet time", "there is no quiet time", In<&Settings::QuietTimeOn>},
    {"Quiet time", u"Check", u"Check1(46)", "quiet-sunday", kOnOff, kReload, "quiet time on Sunday",
     "quiet from quiet-sunday-from to quiet-sunday-to, if quiet-time is on", "no quiet time on Sunday", At<&Settings::QuietDay, 0>},
    {"Quiet time", u"Text", u"Text1(38)", "quiet-sunday-from", kTimeOfDay, kReload, "first quiet minute on Sunday",
     "quiet from {} on", "quiet from midnight on", At<&Settings::QuietTimes, 0>},
    {"Quiet time", u"Text", u"Text1(39)", "quiet-sunday-to", kTimeOfDay, kReload, "last quiet minute on Sunday",
     "quiet until {}, that minute included", "not quiet", At<&Settings::QuietTimes, 1>},
    {"Quiet time", u"Check", u"Check1(47)", "quiet-monday", kOnOff, kReload, "quiet time on Monday",
     "quiet from quiet-monday-from to quiet-monday-to, if quiet-time is on", "no quiet time on Monday", At<&Settings::QuietDay, 1>},
    {"Quiet time", u"Text", u"Text1(40)", "quiet-monday-from", kTimeOfDay, kReload, "first quiet minute on Monday",
     "quiet from {} on", "quiet from midnight on", At<&Settings::QuietTimes, 2>},
    {"Quiet time", u"Text", u"Text1(41)", "quiet-monday-to", kTimeOfDay, kReload, "last quiet minute on Monday",
     "quiet until {}, that minute included", "not quiet", At<&Settings::QuietTimes, 3>},
    {"Quiet time", u"Check", u"Check1(48)", "quiet-tuesday", kOnOff, kReload, "quiet time on Tuesday",
     "quiet from quiet-tuesday-from to quiet-tuesday-to, if quiet-time is on", "no quiet time on Tuesday", At<&Settings::QuietDay, 2>},
    {"Quiet time", u"Text", u"Text1(42)", "quiet-tuesday-from", kTimeOfDay, kReload, "first quiet minute on Tuesday",
     "quiet from {} on", "quiet from midnight on", At<&Settings::QuietTimes, 4>},
    {"Quiet time", u"Text", u"Text1(43)", "quiet-tuesday-to", kTimeOfDay, kReload, "last quiet minute on Tuesday",
     "quiet until {}, that minute included", "not quiet", At<&Settings::QuietTimes, 5>},
    {"Quiet time", u"Check", u"Check1(49)", "quiet-wednesday", kOnOff, kReload, "quiet time on Wednesday",
     "quiet from quiet-wednesday-from to quiet-wednesday-to, if quiet-time is on", "no quiet time on Wednesday", At<&Settings::QuietDay, 3>},
    {"Quiet time", u"Text", u"Text1(44)", "quiet-wednesday-from", kTimeOfDay, kReload, "first quiet minute on Wednesday",
     "quiet from {} on", "quiet from midnight on", At<&Settings::QuietTimes, 6>},
    {"Quiet time", u"Text", u"Text1(45)", "quiet-wednesday-to", kTimeOfDay, kReload, "last quiet minute on Wednesday",
     "quiet until {}, that minute included", "not quiet", At<&Settings::QuietTimes, 7>},
    {"Quiet time", u"Check", u"Check1(50)", "quiet-thursday", kOnOff, kReload, "quiet time on Thursday",
     "quiet from quiet-thursday-from to quiet-thursday-to, if quiet-time is on", "no quiet time on Thursday", At<&Settings::QuietDay, 4>},
    {"Quiet time", u"Text", u"Text1(46)", "quiet-thursday-from", kTimeOfDay, kReload, "first quiet minute on Thursday",
     "quiet from {} on", "quiet from midnight on", At<&Settings::QuietTimes, 8>},
    {"Quiet time", u"Text", u"Text1(47)", "quiet-thursday-to", kTimeOfDay, kReload, "last quiet minute on Thursday",
     "quiet until {}, that minute included", "not quiet", At<&Settings::QuietTimes, 9>},
    {"Quiet time", u"Check", u"Check1(51)", "quiet-friday", kOnOff, kReload, "quiet time on Friday",
     "quiet from quiet-friday-from to quiet-friday-to, if quiet-time is on", "no quiet time on Friday", At<&Settings::QuietDay, 5>},
    {"Quiet time", u"Text", u"Text1(48)", "quiet-friday-from", kTimeOfDay, kReload, "first quiet minute on Friday",
     "quiet from {} on", "quiet from midnight on", At<&Settings::QuietTimes, 10>},
    {"Quiet time", u"Text", u"Text1(49)", "quiet-friday-to", kTimeOfDay, kReload, "last quiet minute on Friday",
     "quiet until {}, that minute included", "not quiet", At<&Settings::QuietTimes, 11>},
    {"Quiet time", u"Check", u"Check1(52)", "quiet-saturday", kOnOff, kReload, "quiet time on Saturday",
     "quiet from quiet-saturday-from to quiet-saturday-to, if quiet-time is on", "no quiet time on Saturday", At<&Settings::QuietDay, 6>},
    {"Quiet time", u"Text", u"Text1(50)", "quiet-saturday-from", kTimeOfDay, kReload, "first quiet minute on Saturday",
     "quiet from {} on", "quiet from midnight on", At<&Settings::QuietTimes, 12>},
    {"Quiet time", u"Text", u"Text1(51)", "quiet-saturday-to", kTimeOfDay, kReload, "last quiet minute on Saturday",
     "quiet until {}, that minute included", "not quiet", At<&Settings::QuietTimes, 13>},

    {"Mail", u"Text", u"Text1(29)", "mail-server", kMailServer, kMail, "mail server, as host or host:port",
     "mails are handed to {}", "no mail", In<&MailSettings::SmtpServer>},
    {"Mail", u"Check", u"Check1(40)", "mail-login", kOnOff, kMail, "log in to the mail server",
     "mail-user and mail-password are used", "no login", In<&MailSettings::MailAuth>},
    {"Mail", u"Text", u"Text1(30)", "mail-user", kAnyText, kMail, "user name at the mail server",
     "the login is {} if mail-login is on", "no login", In<&MailSettings::SmtpUser>},
    {"Mail", u"Text", u"Text1(31)", "mail-password", kSecret, kMail, "password at the mail server",
     "it is used if mail-login is on", "none", In<&MailSettings::SmtpPassword>},
    {"Mail", u"Text", u"Text1(58)", "mail-from", kAddress, kMail, "sender of the mails",
     "mails come from {}", "mail servers will refuse the mails", In<&MailSettings::MailFrom>},
    {"Mail", u"Text", u"Text1(59)", "mail-to", kAddress, kMail, "recipient of the mails",
     "mails go to {}", "mail servers will refuse the mails", In<&MailSettings::MailTo>},

    {"Log", u"Text", u"Text1(37)", "log-database", kFile, kReload, "log database, an SQLite file",
     "rows go to {}", "no log", In<&Settings::LogPath>},

    {"History", u"Queue", u"SendAgain", "send-again", kDebug, kReload, "send again what was lost",
     "what waited when the unit was lost or the service ended, within the last hour, is sent again", "WHAT WAITS WHEN THE UNIT IS LOST OR THE SERVICE ENDS IS NEVER SENT", In<&Settings::SendAgain>},
    {"History", u"Queue", u"HistorySize", "history-size", kMegabytes, kReload, "size of the history of all messages, at most (MB)",
     "the oldest rows go when it takes more than {} MB", "the oldest rows go when it takes more than 50 MB", In<&Settings::HistorySize>},

    {"Start", u"SerialPorts", u"COM1", "com1-device", kFile, kStart, "device behind port number 1",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 0>},
    {"Start", u"SerialPorts", u"COM2", "com2-device", kFile, kStart, "device behind port number 2",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 1>},
    {"Start", u"SerialPorts", u"COM3", "com3-device", kFile, kStart, "device behind port number 3",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 2>},
    {"Start", u"SerialPorts", u"COM4", "com4-device", kFile, kStart, "device behind port number 4",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 3>},
    {"Start", u"SerialPorts", u"COM5", "com5-device", kFile, kStart, "device behind port number 5",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 4>},
    {"Start", u"SerialPorts", u"COM6", "com6-device", kFile, kStart, "device behind port number 6",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 5>},
    {"Start", u"SerialPorts", u"COM7", "com7-device", kFile, kStart, "device behind port number 7",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 6>},
    {"Start", u"SerialPorts", u"COM8", "com8-device", kFile, kStart, "device behind port number 8",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 7>},
    {"Start", u"SerialPorts", u"COM9", "com9-device", kFile, kStart, "device behind port number 9",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 8>},
    {"Start", u"SerialPorts", u"COM10", "com10-device", kFile, kStart, "device behind port number 10",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 9>},
    {"Start", u"SerialPorts", u"COM11", "com11-device", kFile, kStart, "device behind port number 11",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 10>},
    {"Start", u"SerialPorts", u"COM12", "com12-device", kFile, kStart, "device behind port number 12",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 11>},
    {"Start", u"SerialPorts", u"COM13", "com13-device", kFile, kStart, "device behind port number 13",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 12>},
    {"Start", u"SerialPorts", u"COM14", "com14-device", kFile, kStart, "device behind port number 14",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 13>},
    {"Start", u"SerialPorts", u"COM15", "com15-device", kFile, kStart, "device behind port number 15",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 14>},
    {"Start", u"SerialPorts", u"COM16", "com16-device", kFile, kStart, "device behind port number 16",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 15>},
    {"Start", u"SerialPorts", u"COM17", "com17-device", kFile, kStart, "device behind port number 17",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 16>},
    {"Start", u"SerialPorts", u"COM18", "com18-device", kFile, kStart, "device behind port number 18",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 17>},
    {"Start", u"SerialPorts", u"COM19", "com19-device", kFile, kStart, "device behind port number 19",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 18>},
    {"Start", u"SerialPorts", u"COM20", "com20-device", kFile, kStart, "device behind port number 20",
     "the unit is searched for at {}", "the unit is searched for at {}", At<&StartSettings::device_paths, 19>},
    {"Start", u"ControlLink", u"BindAddress", "bind-address", kBindAddress, kStart, "IPv4 address at which monitoring programs are listened to",
     "monitoring programs reach the service at {}", "only programs on this machine reach the service", In<&StartSettings::bind_address>},
    {"Start", u"Encoding", u"CodePage", "code-page", kCodePages, kStart, "code page of this file, the links, the serial line and the mails",
     "texts are in {}", "texts are in {}", In<&StartSettings::code_page>},

    {"Record of the service", u"TarnexComm", u"LastCom", "last-port", kWritten, kByService, "port where the unit was last found",
     "COM{} is tried first", "all ports are tried"},
};
// clang-format on

} // namespace table

// Every key that the service reads or writes, but for those of the device record, in the order of
// the groups; those kept in the unit in the order in which they are written into it.
inline constexpr std::span<const Setting> kSettings = table::kRows;

// The row of a plain name; a name without a row does not compile.
consteval const Setting& operator""_setting(const char* name, std::size_t length) {
    for (const Setting& setting : kSettings)
        if (setting.name == std::string_view(name, length))
            return setting;
    throw "there is no such setting";
}

// The device behind COM<number>, 1 to kSerialPorts.
constexpr const Setting& DeviceSetting(int number) {
    return (&"com1-device"_setting)[number - 1];
}
static_assert(DeviceSetting(kSerialPorts).name == "com20-device");

// For operators, as tarnexctl takes it: "mail-server", with the quotation marks.
inline std::string NameOf(const Setting& setting) {
    return '"' + std::string(setting.name) + '"';
}

// The debug console's section, with some keys of the same names.
inline constexpr TextView kConsoleSection = u"TarnexDebug";

} // namespace tarnex
