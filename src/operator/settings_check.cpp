#include "operator/settings_check.h"

#include "operator/setting_value.h"
#include "platform/calendar_text.h"

#include <algorithm>
#include <filesystem>

namespace tarnex {

namespace {

using Level = Finding::Level;

constexpr std::size_t kSafePhoneLength = 7;

class Checker {
  public:
    explicit Checker(const SettingsFile& file) : file_(file) {}

    std::vector<Finding> Run() {
        FileForm();
        Gates();
        AlarmNumber("alarm-number-1");
        AlarmNumber("alarm-number-2");
        SmsWays();
        UnitSettings();
        Links();
        QuietTime();
        Mail();
        Log();
        Openness();
        Forms();
        return std::move(findings_);
    }

  private:
    static const Setting& Of(const std::string& name) { return *FindSetting(name); }
    TextView Value(const std::string& name) const { return file_.Value(Of(name)); }
    bool On(const std::string& name) const { return IsOn(Of(name), Value(name)); }
    bool Empty(const std::string& name) const { return Trim(Value(name)).empty(); }

    void Say(Level level, const std::string& name, const std::string& text) {
        findings_.push_back({level, name, text});
    }
    void Warn(const std::string& name, const std::string& text) {
        Say(Level::kWarning, name, text);
    }
    void Error(const std::string& name, const std::string& text) { Say(Level::kError, name, text); }

    // What an editor may have made of the file.
    void FileForm() {
        const std::string& content = file_.Content();
        if (content.find('\0') != std::string::npos)
            Error("file", "is UTF-16, or no text at all; save it as " + file_.EncodingName());
        if (content.starts_with("\xEF\xBB\xBF"))
            Warn("line 1", "begins with a byte order mark, so a section that stands there is not "
                           "found; save the file without it");
        if (file_.EncodingName() == "UTF-8" ? !file_.IsUtf8() : file_.IsChineseUtf8())
            Warn("code-page", "is " + file_.EncodingName() +
                                  ", but the file holds texts that are none, so these come out as "
                                  "other characters; convert the file with iconv, or set the other "
                                  "code page");
    }

    void Gates() {
        if (!On("service-enabled"))
            Error("service-enabled", "the service ends at once; switch it on");
        if (!On("run-allowed"))
            Error("run-allowed", "is missing or off, so the service ends at once; switch it on");
    }

    void AlarmNumber(const std::string& name) {
        const TextView value = Trim(Value(name));
        const std::string help = "; with one telephone only, write its number into both";
        if (value.empty())
            Error(name,
                  "is empty, so EVERYBODY can have machines restarted and shut down by SMS" + help);
        else if (value.find_first_not_of(u'0') == TextView::npos)
            Warn(name, "is still the place-holder of the sample; put your number in");
        else if (value.size() < kSafePhoneLength)
            Error(name, "is so short that it is part of many numbers, and all of them may command");
    }

    void UnitSettings() {
        for (const Setting& setting : SettingCatalog())
            if (setting.kept_in_unit && Empty(setting.name) && !AlreadyNamed(setting.name))
                Warn(setting.name, "is empty, so it is written into the unit at every check, and a "
                                   "unit that has fallen silent is noticed late; give it a value");
        if (const TextView centre = Trim(Value("sms-centre"));
            !centre.empty() && centre.find_first_not_of(u"0") == TextView::npos)
            Warn("sms-centre", "is still the place-holder of the sample; no SMS leaves the unit");
    }

    void SmsWays() {
        if (!On("unit-link"))
            Warn("unit-link", "is off: the unit is not searched for, and no notification goes by "
                              "SMS");
        if (LeadingInt16(Value("send-count")).value_or(1) <= 0)
            Warn("send-count",
                 "is empty, 0 or no number, so no notification goes by SMS; 1 sends each once");
        if (!On("sms-to-number-1") && !On("sms-to-number-2"))
            Warn("sms-to-number-1", "and sms-to-number-2 are off, so no notification goes by SMS");
        if (On("sms-to-number-1") && On("sms-to-number-2") && !Empty("alarm-number-1") &&
            Value("alarm-number-1") == Value("alarm-number-2"))
            Warn("sms-to-number-2", "is on for the number that sms-to-number-1 is on for, so one "
                                    "telephone gets everything twice; switch it off");
    }

    void Links() {
        if (!On("link-0"))
            Warn("link-0", "is off, which silences all five links: monitoring programs hear "
                           "nothing but the answers to their greetings");
    }

    void QuietTime() {
        if (!On("quiet-time"))
            return;
        bool any_day = false;
        for (int weekday = 0; weekday < 7; ++weekday) {
            const std::string day = QuietSettingName(weekday);
            if (!On(day))
                continue;
            any_day = true;
            const Text from = FormattedHourMinute(Value(day + "-from"));
            const Text to = FormattedHourMinute(Value(day + "-to"));
            if (from > to)
                Warn(day + "-from",
                     "is later than " + day + "-to (" + ToUtf8(from) + " to " + ToUtf8(to) +
                         "), so this day is never quiet: a quiet time cannot pass midnight");
        }
        if (!any_day)
            Warn("quiet-time", "is on, but no day is, so it is never quiet");
    }

    void Mail() {
        const std::vector<std::string> needed{"mail-server", "mail-from", "mail-to"};
        const auto missing =
            std::ranges::count_if(needed, [this](const std::string& n) { return Empty(n); });
        for (const std::string& name : needed)
            if (Empty(name) && missing < std::ssize(needed))
                Warn(name, "is empty, but other mail settings are not, so every mail fails");
        if (missing == std::ssize(needed) && On("link-events-by-mail"))
            Warn("mail-server", "is empty, but link-events-by-mail is on; no mail goes out");
        if (On("mail-login") && (Empty("mail-user") || Empty("mail-password")))
            Warn("mail-login", "is on, but mail-user or mail-password is empty");
        if (!On("mail-login") && !Empty("mail-password"))
            Warn("mail-password", "is not used, since mail-login is off");
        namespace fs = std::filesystem;
        std::error_code unknown;
        const fs::perms rights = fs::status(file_.Path(), unknown).permissions();
        if (!unknown && !Empty("mail-password") && (rights & fs::perms::others_read) != fs::perms())
            Warn("mail-password", "can be read by every user of this machine; take that right "
                                  "away: chmod o-r " +
                                      file_.Path());
    }

    void Log() {
        const std::string path = ToUtf8(Value("log-database"));
        std::error_code error;
        if (path.empty())
            Warn("log-database", "is empty, so no log is kept");
        else if (!std::filesystem::exists(path, error) && !error)
            Warn("log-database", "names " + path +
                                     ", which is not there, so rows are lost; make "
                                     "it with: tarnexctl log create");
    }

    void Openness() {
        const std::string& address = file_.AtStart().bind_address;
        if (!address.starts_with("127."))
            Warn("bind-address", "is " + address +
                                     ": whoever reaches that address can have SMS sent; close it "
                                     "with a firewall, or use 127.0.0.1");
    }

    // A value that is there but is none.
    void Forms() {
        for (const Setting& setting : SettingCatalog()) {
            const TextView value = Value(setting.name);
            if (value.empty() || setting.kind == SettingKind::kRecord || AlreadyNamed(setting.name))
                continue;
            const std::string objection = Objection(setting, value);
            if (objection.empty())
                continue;
            const std::string what = "is \"" + ToUtf8(value) + "\", which " + objection;
            switch (setting.kind) {
            case SettingKind::kSwitch:
                Warn(setting.name,
                     what + ", so it counts as " + (IsOn(setting, value) ? "on" : "off"));
                break;
            case SettingKind::kPassword:
                Warn(setting.name, objection);
                break;
            case SettingKind::kIpAddress:
                Error(setting.name, what + ", so no monitoring program is heard");
                break;
            default:
                Warn(setting.name, what);
            }
        }
    }

    bool AlreadyNamed(const std::string& name) const {
        return std::ranges::count(findings_, name, &Finding::name) > 0;
    }

    const SettingsFile& file_;
    std::vector<Finding> findings_;
};

} // namespace

std::vector<Finding> CheckSettings(const SettingsFile& file) {
    std::vector<Finding> findings = Checker(file).Run();
    const std::vector<Finding> stray = StrayLines(file);
    findings.insert(findings.end(), stray.begin(), stray.end());
    return findings;
}

} // namespace tarnex
