#include "operator/setting_catalog.h"

#include "operator/moment.h"
#include "operator/suggestion.h"
#include "platform/calendar_text.h"

#include <algorithm>

namespace tarnex {

namespace {

using enum SettingKind;

constexpr const char* kReload = "within 10 seconds";
constexpr const char* kCheck = "at the next check of the unit, about every 5 seconds";
constexpr const char* kMail = "with the next mail";
constexpr const char* kReset = "when the service starts, and when it loses the unit";
constexpr const char* kStart = "at the next start of the service";
constexpr const char* kByService = "written by the service";

// What most settings need; the rest is added by name below.
struct Row {
    const char* group;
    TextView section;
    TextView key;
    const char* name;
    SettingKind kind;
    const char* meaning;
    const char* when_set;
    const char* when_not_set;
    const char* in_force;
};

// clang-format off
constexpr Row kRows[] = {
    {"Running", u"Service", u"Enable", "service-enabled", kSwitch, "whether the service runs",
     "the service may run, if run-allowed is on too", "THE SERVICE ENDS", kReload},
    {"Running", u"Check", u"Check1(13)", "run-allowed", kSwitch, "permission to run",
     "the service may run", "THE SERVICE ENDS", kReload},
    {"Running", u"Debug", u"DebugMode", "debug-mode", kSwitch, "whether the service tells all it does",
     "every line, datagram and decision is shown or goes to the journal", "only what needs attention goes to the journal", kReset},

    {"Unit", u"Check", u"Check1(7)", "unit-link", kSwitch, "work with the unit",
     "the unit is searched for and SMS are sent", "the unit is not searched for; no notification by SMS", kReload},
    {"Unit", u"Text", u"Text1(34)", "alarm-number-1", kPhone, "first alarm telephone number",
     "{} gets notifications if sms-to-number-1 is on, and commands by SMS", "EVERYBODY MAY COMMAND BY SMS", kCheck},
    {"Unit", u"Text", u"Text1(35)", "alarm-number-2", kPhone, "second alarm telephone number",
     "{} gets notifications if sms-to-number-2 is on, and commands by SMS", "EVERYBODY MAY COMMAND BY SMS", kCheck},
    {"Unit", u"Text", u"Text1(36)", "sms-centre", kPhone, "number of the carrier's SMS service centre",
     "SMS leave through {}", "none; the empty value is sent to the unit at every check", kCheck},
    {"Unit", u"Combo", u"combo1(5)", "communication-alarm-time", kText, "communication alarm time, in the unit's own form (minutes)",
     "the unit raises its alarm {} minutes after the last word of the service", "none; the empty value is sent to the unit at every check", kCheck},
    {"Unit", u"Combo", u"Combo1(6)", "send-count", kNumber, "how often each notification is sent by SMS",
     "each notification is queued {}x for each number", "NO NOTIFICATION BY SMS", kCheck},
    {"Unit", u"Check", u"Check1(45)", "communication-alarm", kSwitch, "communication alarm of the unit",
     "the unit raises an alarm when the service falls silent", "the unit does not watch the service", kCheck},
    {"Unit", u"Check", u"Check1(44)", "power-alarm", kSwitch, "power alarm of the unit",
     "the unit raises an alarm when its mains power fails", "the unit does not report mains power", kCheck},
    {"Unit", u"Text", u"Text1(32)", "unit-name", kText, "name of the unit",
     "the unit is called {}", "none; the empty value is sent to the unit at every check", kCheck},
    {"Unit", u"Check", u"Check1(57)", "unit-name-shown", kSwitch, "the unit's name on its display",
     "the unit shows its name", "the unit does not show its name", kCheck},
    {"Unit", u"Text", u"Text1(33)", "unit-port", kRecord, "port of the unit",
     "{} (\"*\": being searched for)", "not known yet", kByService},

    {"Links to monitoring programs", u"Check", u"Check1(8)", "link-0", kSwitch, "link 0, and the main switch of all links",
     "link 0 is sent to, and links 1 to 4 may be", "ALL FIVE LINKS ARE SILENT", kReload},
    {"Links to monitoring programs", u"Check", u"Check1(9)", "link-1", kSwitch, "link 1",
     "link 1 is sent to if link-0 is on", "link 1 is not sent to", kReload},
    {"Links to monitoring programs", u"Check", u"Check1(10)", "link-2", kSwitch, "link 2",
     "link 2 is sent to if link-0 is on", "link 2 is not sent to", kReload},
    {"Links to monitoring programs", u"Check", u"Check1(11)", "link-3", kSwitch, "link 3",
     "link 3 is sent to if link-0 is on", "link 3 is not sent to", kReload},
    {"Links to monitoring programs", u"Check", u"Check1(12)", "link-4", kSwitch, "link 4",
     "link 4 is sent to if link-0 is on", "link 4 is not sent to", kReload},

    {"Notifications", u"Check", u"Check1(42)", "sms-to-number-1", kSwitch, "notifications by SMS to alarm-number-1",
     "notifications go to the first number", "no notifications to the first number", kReload},
    {"Notifications", u"Check", u"Check1(43)", "sms-to-number-2", kSwitch, "notifications by SMS to alarm-number-2",
     "notifications go to the second number", "no notifications to the second number", kReload},
    {"Notifications", u"Check", u"Check1(58)", "forward-fee-sms", kSwitch, "fee messages of strangers",
     "they are forwarded to both numbers", "they are dropped; those about the balance are forwarded all the same", kReload},
    {"Notifications", u"Alarm", u"AlarmLabel(7)", "link-events-way", kChoice, "how greetings and losses of monitoring programs are reported",
     "they may go by {}, if link-events-by-sms or -by-mail is on", "they are not reported", kReload},
    {"Notifications", u"Check", u"Check1(5)", "link-events-by-sms", kSwitch, "greetings and losses of monitoring programs by SMS",
     "they are reported by SMS if link-events-way is SMS or S+E", "they are not reported by SMS", kReload},
    {"Notifications", u"Check", u"Check1(39)", "link-events-by-mail", kSwitch, "greetings and losses of monitoring programs by mail",
     "they are reported by mail if link-events-way is Email or S+E", "they are not reported by mail", kReload},

    {"Quiet time", u"Check", u"Check1(6)", "quiet-time", kSwitch, "weekly time without notifications by SMS",
     "the days that are on have their quiet time", "there is no quiet time", kReload},

    {"Mail", u"Text", u"Text1(29)", "mail-server", kServer, "mail server, as host or host:port",
     "mails are handed to {}", "no mail", kMail},
    {"Mail", u"Check", u"Check1(40)", "mail-login", kSwitch, "log in to the mail server",
     "mail-user and mail-password are used", "no login", kMail},
    {"Mail", u"Text", u"Text1(30)", "mail-user", kText, "user name at the mail server",
     "the login is {} if mail-login is on", "no login", kMail},
    {"Mail", u"Text", u"Text1(31)", "mail-password", kPassword, "password at the mail server",
     "it is used if mail-login is on", "none", kMail},
    {"Mail", u"Text", u"Text1(58)", "mail-from", kMailAddress, "sender of the mails",
     "mails come from {}", "mail servers will refuse the mails", kMail},
    {"Mail", u"Text", u"Text1(59)", "mail-to", kMailAddress, "recipient of the mails",
     "mails go to {}", "mail servers will refuse the mails", kMail},

    {"Log", u"Text", u"Text1(37)", "log-database", kPath, "log database, an SQLite file",
     "rows go to {}", "no log", kReload},

    {"Start", u"ControlLink", u"BindAddress", "bind-address", kIpAddress, "IPv4 address at which monitoring programs are listened to",
     "monitoring programs reach the service at {}", "only programs on this machine reach the service", kStart},
    {"Start", u"Encoding", u"CodePage", "code-page", kChoice, "code page of this file, the links, the serial line and the mails",
     "texts are in {}", "texts are in GBK", kStart},

    {"Record of the service", u"TarnexComm", u"LastCom", "last-port", kRecord, "port where the unit was last found",
     "COM{} is tried first", "all ports are tried", kByService},
};

// What is kept in the unit, and where the service records what it last wrote there.
struct UnitRecord {
    const char* name;
    TextView key;
};
constexpr UnitRecord kUnitRecords[] = {
    {"alarm-number-1",           u"TelNo1"},
    {"alarm-number-2",           u"TelNo2"},
    {"sms-centre",               u"SMSCenter"},
    {"communication-alarm-time", u"CommAlarmTime"},
    {"send-count",               u"SendTimes"},
    {"communication-alarm",      u"CommAlarmEnable"},
    {"power-alarm",              u"PowrAlarmEnable"},
    {"unit-name",                u"TarnexName"},
    {"unit-name-shown",          u"NameEnable"},
};
// clang-format on

constexpr int kFirstDayKey = 46;  // Check1
constexpr int kFirstTimeKey = 38; // Text1
constexpr int kPorts = 20;

Setting MakeSetting(const Row& row) {
    Setting setting;
    setting.group = row.group;
    setting.section = row.section;
    setting.key = row.key;
    setting.name = row.name;
    setting.kind = row.kind;
    setting.meaning = row.meaning;
    setting.when_set = row.when_set;
    setting.when_not_set = row.when_not_set;
    setting.in_force = row.in_force;
    return setting;
}

void AddQuietDays(std::vector<Setting>& catalog) {
    for (int day = 0; day < 7; ++day) {
        const std::string name = WeekdayName(day);
        const std::string prefix = QuietSettingName(day);
        Setting on = MakeSetting({"Quiet time", u"Check", {}, "", kSwitch, "", "", "", kReload});
        on.key = u"Check1(" + ToText(kFirstDayKey + day) + u")";
        on.name = prefix;
        on.meaning = "quiet time on " + name;
        on.when_set = "quiet from " + prefix + "-from to " + prefix + "-to, if quiet-time is on";
        on.when_not_set = "no quiet time on " + name;
        catalog.push_back(on);
        for (const bool from : {true, false}) {
            Setting time = MakeSetting({"Quiet time", u"Text", {}, "", kTime, "", "", "", kReload});
            time.key = u"Text1(" + ToText(kFirstTimeKey + 2 * day + !from) + u")";
            time.name = prefix + (from ? "-from" : "-to");
            time.meaning = std::string(from ? "first" : "last") + " quiet minute on " + name;
            time.when_set =
                std::string(from ? "quiet from {} on" : "quiet until {}, that minute included");
            time.when_not_set = from ? "quiet from midnight on" : "not quiet";
            catalog.push_back(time);
        }
    }
}

void AddPorts(std::vector<Setting>& catalog) {
    for (int port = 1; port <= kPorts; ++port) {
        Setting path = MakeSetting({"Start", u"SerialPorts", {}, "", kPath, "", "", "", kStart});
        path.port = port;
        path.key = u"COM" + ToText(port);
        path.name = "com" + std::to_string(port) + "-device";
        path.meaning = "device behind port number " + std::to_string(port);
        path.when_set = "the unit is searched for at {}";
        path.when_not_set = path.when_set;
        catalog.push_back(path);
    }
}

void AddUnitRecords(std::vector<Setting>& catalog) {
    for (const UnitRecord& row : kUnitRecords) {
        const std::string name = row.name;
        Setting record = MakeSetting({"Record of the service", u"TarnexComm", row.key, "", kRecord,
                                      "", "{}", "not written yet", kByService});
        record.name = "written-" + name;
        record.meaning = name + " as last written into the unit (\"@v@\": not known)";
        catalog.push_back(record);
    }
}

Setting& Find(std::vector<Setting>& catalog, const char* name) {
    return *std::ranges::find(catalog, name, &Setting::name);
}

std::vector<Setting> BuildCatalog() {
    std::vector<Setting> catalog;
    for (const Row& row : kRows) {
        if (row.section == u"ControlLink")
            AddPorts(catalog);
        catalog.push_back(MakeSetting(row));
        if (row.key == u"Check1(6)")
            AddQuietDays(catalog);
    }
    AddUnitRecords(catalog);
    for (const UnitRecord& row : kUnitRecords)
        Find(catalog, row.name).kept_in_unit = true;
    Setting& enabled = Find(catalog, "service-enabled");
    enabled.on = u"Enable";
    enabled.off = u"Disable";
    enabled.on_unless_off = true;
    Setting& debug = Find(catalog, "debug-mode");
    debug.on = u"On";
    debug.off = u"Off";
    Find(catalog, "unit-link").on_unless_off = true;
    Find(catalog, "send-count").highest = 20;
    Find(catalog, "link-events-way").choices = "SMS|Email|S+E";
    Find(catalog, "code-page").choices = "GBK|UTF-8";
    return catalog;
}

bool HasText(const Setting& setting, TextView value) {
    if (setting.kind == kNumber)
        return LeadingInt16(value).value_or(0) > 0;
    return !Trim(value).empty();
}

} // namespace

const std::vector<Setting>& SettingCatalog() {
    static const std::vector<Setting> catalog = BuildCatalog();
    return catalog;
}

std::string QuietSettingName(int weekday) {
    std::string name = std::string("quiet-") + WeekdayName(weekday);
    name[6] = char(name[6] - 'A' + 'a');
    return name;
}

const Setting* FindSetting(const std::string& name) {
    const Text wanted = FromUtf8(name);
    const auto found = std::ranges::find_if(SettingCatalog(), [&](const Setting& setting) {
        return EqualIgnoringCase(wanted, FromUtf8(setting.name)) ||
               EqualIgnoringCase(wanted, setting.key) ||
               EqualIgnoringCase(wanted, setting.section + u"/" + setting.key);
    });
    return found == SettingCatalog().end() ? nullptr : &*found;
}

const Setting* FindSetting(TextView section, TextView key) {
    const auto found = std::ranges::find_if(SettingCatalog(), [&](const Setting& setting) {
        return EqualIgnoringCase(setting.section, section) && EqualIgnoringCase(setting.key, key);
    });
    return found == SettingCatalog().end() ? nullptr : &*found;
}

std::string ClosestSettingName(const std::string& name) {
    std::vector<std::string> names;
    for (const Setting& setting : SettingCatalog())
        names.insert(names.end(), {setting.name, ToUtf8(setting.key)});
    return Closest(name, names);
}

bool IsOn(const Setting& setting, TextView value) {
    return setting.on_unless_off ? value != setting.off : value == setting.on;
}

std::string Effect(const Setting& setting, TextView value,
                   const std::array<std::string, 20>& ports) {
    const bool set = setting.kind == kSwitch ? IsOn(setting, value) : HasText(setting, value);
    std::string effect = set ? setting.when_set : setting.when_not_set;
    const std::size_t at = effect.find("{}");
    if (at == std::string::npos)
        return effect;
    const std::string shown = !set                    ? ports.at(std::size_t(setting.port) - 1)
                              : setting.kind == kTime ? ToUtf8(FormattedHourMinute(value))
                                                      : ToUtf8(Trim(value));
    return effect.replace(at, 2, shown);
}

} // namespace tarnex
