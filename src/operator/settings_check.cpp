#include "operator/settings_check.h"

#include "operator/port_check.h"
#include "operator/setting_catalog.h"
#include "operator/suggestion.h"
#include "platform/calendar_text.h"
#include "platform/file_path.h"

#include <algorithm>
#include <set>

namespace tarnex {

namespace {

using FindingLevel = Finding::Level;

constexpr std::size_t kSafePhoneLength = 7;
constexpr int kRowsOfADay = 3; // of the quiet time: on, from, to
static_assert("quiet-saturday-to"_setting.key ==
              (&"quiet-sunday"_setting)[6 * kRowsOfADay + 2].key);

class Checker {
  public:
    explicit Checker(const SettingsFile& file) : file_(file) {}

    std::vector<Finding> Run() {
        FileForm();
        Gates();
        AlarmNumber("alarm-number-1"_setting);
        AlarmNumber("alarm-number-2"_setting);
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
    TextView Value(const Setting& setting) const { return file_.Value(setting); }
    bool On(const Setting& setting) const { return IsOn(setting, Value(setting)); }
    bool Empty(const Setting& setting) const { return Trim(Value(setting)).empty(); }

    void Warn(std::string_view where, const std::string& text) {
        findings_.push_back({FindingLevel::kWarning, std::string(where), text});
    }
    void Warn(const Setting& setting, const std::string& text) { Warn(setting.name, text); }
    void Error(std::string_view where, const std::string& text) {
        findings_.push_back({FindingLevel::kError, std::string(where), text});
    }
    void Error(const Setting& setting, const std::string& text) { Error(setting.name, text); }

    // What an editor may have made of the file.
    void FileForm() {
        if (const std::string why = file_.KeptFromService(); !why.empty())
            Error("file", "cannot be read by the service: " + why);
        const std::string& content = file_.Content();
        if (content.find('\0') != std::string::npos)
            Error("file", "is UTF-16, or no text at all; save it as " + file_.EncodingName());
        if (content.starts_with("\xEF\xBB\xBF"))
            Warn("line 1", "begins with a byte order mark, so a section that stands there is not "
                           "found; save the file without it");
        if (file_.EncodingName() == "UTF-8" ? !file_.IsUtf8() : file_.IsChineseUtf8())
            Warn("code-page"_setting,
                 "is " + file_.EncodingName() +
                     ", but the file holds texts that are none, so these come out as "
                     "other characters; convert the file, or set the other code page");
    }

    void Gates() {
        if (!On("service-enabled"_setting))
            Error("service-enabled"_setting, "the service ends at once; switch it on");
        if (!On("run-allowed"_setting))
            Error("run-allowed"_setting,
                  "is missing or off, so the service ends at once; switch it on");
    }

    void AlarmNumber(const Setting& number) {
        if (auto finding = CheckAlarmNumber(number, Value(number)))
            findings_.push_back(std::move(*finding));
    }

    void UnitSettings() {
        for (const Setting& setting : kSettings)
            if (!setting.record.empty() && Empty(setting) && !AlreadyNamed(setting))
                Warn(setting, "is empty, so it is written into the unit at every check, and a "
                              "unit that has fallen silent is noticed late; give it a value");
        if (const TextView centre = Trim(Value("sms-centre"_setting));
            !centre.empty() && centre.find_first_not_of(u"0") == TextView::npos)
            Warn("sms-centre"_setting,
                 "is still the place-holder of the sample; no SMS leaves the unit");
    }

    void SmsWays() {
        if (!On("unit-link"_setting))
            Warn("unit-link"_setting,
                 "is off: the unit is not searched for, and no notification goes by "
                 "SMS");
        if (LeadingInt16(Value("send-count"_setting)).value_or(1) <= 0)
            Warn("send-count"_setting,
                 "is empty, 0 or no number, so no notification goes by SMS; 1 sends each once");
        if (!On("sms-to-number-1"_setting) && !On("sms-to-number-2"_setting))
            Warn("sms-to-number-1"_setting,
                 "and sms-to-number-2 are off, so no notification goes by SMS");
        if (On("sms-to-number-1"_setting) && On("sms-to-number-2"_setting) &&
            !Empty("alarm-number-1"_setting) &&
            Value("alarm-number-1"_setting) == Value("alarm-number-2"_setting))
            Warn("sms-to-number-2"_setting,
                 "is on for the number that sms-to-number-1 is on for, so one "
                 "telephone gets everything twice; switch it off");
    }

    void Links() {
        if (!On("link-0"_setting))
            Warn("link-0"_setting,
                 "is off, which silences all five links: monitoring programs hear "
                 "nothing but the answers to their greetings");
    }

    void QuietTime() {
        if (!On("quiet-time"_setting))
            return;
        bool any_day = false;
        for (int weekday = 0; weekday < 7; ++weekday) {
            const Setting* const day = &"quiet-sunday"_setting + kRowsOfADay * weekday;
            if (!On(day[0]))
                continue;
            any_day = true;
            const Text from = FormattedHourMinute(Value(day[1]));
            const Text to = FormattedHourMinute(Value(day[2]));
            if (from > to)
                Warn(day[1],
                     "is later than " + std::string(day[2].name) + " (" + ToUtf8(from) + " to " +
                         ToUtf8(to) +
                         "), so this day is never quiet: a quiet time cannot pass midnight");
        }
        if (!any_day)
            Warn("quiet-time"_setting, "is on, but no day is, so it is never quiet");
    }

    void Mail() {
        const std::array needed{&"mail-server"_setting, &"mail-from"_setting, &"mail-to"_setting};
        const auto missing =
            std::ranges::count_if(needed, [this](const Setting* each) { return Empty(*each); });
        for (const Setting* each : needed)
            if (Empty(*each) && missing < std::ssize(needed))
                Warn(*each, "is empty, but other mail settings are not, so every mail fails");
        if (missing == std::ssize(needed) && On("link-events-by-mail"_setting))
            Warn("mail-server"_setting,
                 "is empty, but link-events-by-mail is on; no mail goes out");
        if (On("mail-login"_setting) &&
            (Empty("mail-user"_setting) || Empty("mail-password"_setting)))
            Warn("mail-login"_setting, "is on, but mail-user or mail-password is empty");
        if (!On("mail-login"_setting) && !Empty("mail-password"_setting))
            Warn("mail-password"_setting, "is not used, since mail-login is off");
        if (!Empty("mail-password"_setting) && file_.AllMayRead()) {
            std::string close_file = file_.Words().close_file;
            close_file.replace(close_file.find("%1"), 2, file_.Path());
            Warn("mail-password"_setting, "can be read by every user of this machine; take that "
                                          "right away: " +
                                              close_file);
        }
    }

    void Log() {
        const std::string path = ToUtf8(Value("log-database"_setting));
        std::error_code error;
        if (path.empty())
            Warn("log-database"_setting, "is empty, so no log is kept");
        else if (!std::filesystem::exists(ToPath(path), error) && !error)
            Warn("log-database"_setting, "names " + path +
                                             ", which is not there, so rows are lost; make "
                                             "it with: tarnexctl log create");
    }

    void Openness() {
        const std::string& address = file_.AtStart().bind_address;
        const bool is_one = Objection("bind-address"_setting, FromUtf8(address)).empty();
        if (is_one && !address.starts_with("127."))
            Warn("bind-address"_setting,
                 "is " + address +
                     ": whoever reaches that address can have SMS sent; close it "
                     "with a firewall, or use 127.0.0.1");
    }

    // A value that is there but is none.
    void Forms() {
        for (const Setting& setting : kSettings) {
            const TextView value = Value(setting);
            if (value.empty() || setting.Kind() == SettingKind::kRecord || AlreadyNamed(setting))
                continue;
            const std::string objection = Objection(setting, value);
            if (objection.empty())
                continue;
            const std::string what = "is \"" + ToUtf8(value) + "\", which " + objection;
            switch (setting.Kind()) {
            case SettingKind::kSwitch:
                Warn(setting, what + ", so it counts as " + (IsOn(setting, value) ? "on" : "off"));
                break;
            case SettingKind::kPassword:
                Warn(setting, objection);
                break;
            case SettingKind::kIpAddress:
                Error(setting, what + ", so no monitoring program is heard");
                break;
            default:
                Warn(setting, what);
            }
        }
    }

    bool AlreadyNamed(const Setting& setting) const {
        return std::ranges::count(findings_, setting.name, &Finding::name) > 0;
    }

    const SettingsFile& file_;
    std::vector<Finding> findings_;
};

// Sections that other programs keep keys of their own in; only slips of the keyboard are told
// there.
constexpr TextView kSharedSections[] = {u"Check", u"Text", u"Combo", u"Alarm"};

bool IsShared(TextView section) {
    return std::ranges::any_of(kSharedSections,
                               [&](TextView s) { return EqualIgnoringCase(s, section); });
}

// The service has settings there. What stands in any other section is somebody else's.
bool HasSettings(TextView section) {
    return std::ranges::any_of(
        kSettings, [&](const Setting& s) { return EqualIgnoringCase(s.section, section); });
}

Text LowerCase(TextView text) {
    Text lower(text);
    for (char16_t& c : lower)
        if (c >= u'A' && c <= u'Z')
            c = char16_t(c - u'A' + u'a');
    return lower;
}

// "Check1(13)" and the like, as other programs name their controls.
bool IsControlName(TextView key) {
    const std::size_t open = key.find(u'(');
    return open != TextView::npos && key.ends_with(u')') &&
           key.substr(open + 1, key.size() - open - 2).find_first_not_of(u"0123456789") ==
               TextView::npos &&
           (EqualIgnoringCase(key.substr(0, open), u"Check1") ||
            EqualIgnoringCase(key.substr(0, open), u"Text1") ||
            EqualIgnoringCase(key.substr(0, open), u"Combo1") ||
            EqualIgnoringCase(key.substr(0, open), u"AlarmLabel"));
}

const Setting* SameKeyElsewhere(TextView key) {
    const auto& catalog = SettingCatalog();
    const auto found = std::ranges::find_if(
        catalog, [&](const Setting& setting) { return EqualIgnoringCase(setting.key, key); });
    return found == catalog.end() ? nullptr : &*found;
}

std::string ClosestKey(TextView section, TextView key) {
    std::vector<std::string> keys;
    for (const Setting& setting : SettingCatalog())
        if (EqualIgnoringCase(setting.section, section))
            keys.push_back(ToUtf8(setting.key));
    return Closest(ToUtf8(key), keys);
}

// What is the matter with a line whose section and key the service does not know; "" when it may
// be another program's.
std::string KeyProblem(const IniDocument::KeyLine& line) {
    if (EqualIgnoringCase(line.section, kConsoleSection))
        return "";
    if (const Setting* elsewhere = SameKeyElsewhere(line.key))
        return "has no effect there: the key belongs into section [" + ToUtf8(elsewhere->section) +
               "]";
    if (IsShared(line.section)) {
        const std::string closest =
            IsControlName(line.key) ? "" : ClosestKey(line.section, line.key);
        return closest.empty() ? "" : "is unknown" + DidYouMean(closest);
    }
    if (HasSettings(line.section))
        return "is unknown" + DidYouMean(ClosestKey(line.section, line.key));
    return "";
}

// Lines of the file that mean nothing: misspelt keys, keys in a wrong section, second lines of a
// key.
std::vector<Finding> StrayLines(const SettingsFile& file) {
    std::vector<Finding> findings;
    std::set<std::pair<Text, Text>> seen;
    for (const auto& line : IniDocument::KeyLines(file.Content(), file.Encoding())) {
        const std::string name = "line " + std::to_string(line.number);
        const std::string key = "[" + ToUtf8(line.section) + "] " + ToUtf8(line.key);
        const bool first = seen.insert({LowerCase(line.section), LowerCase(line.key)}).second;
        std::string problem;
        if (!FindSetting(line.section, line.key))
            problem = KeyProblem(line);
        else if (!first)
            problem = "stands in the file a second time and has no effect: the first line counts";
        if (!problem.empty())
            findings.push_back({Finding::Level::kWarning, name, key + " " + problem});
    }
    return findings;
}

} // namespace

std::optional<Finding> CheckAlarmNumber(const Setting& number, TextView value) {
    value = Trim(value);
    const std::string name(number.name);
    if (value.empty())
        return Finding{FindingLevel::kError, name,
                       "is empty, so EVERYBODY can have machines restarted and shut down by SMS; "
                       "with one telephone only, write its number into both"};
    if (value.find_first_not_of(u'0') == TextView::npos)
        return Finding{FindingLevel::kWarning, name,
                       "is still the place-holder of the sample; put your number in"};
    if (value.size() < kSafePhoneLength)
        return Finding{FindingLevel::kError, name,
                       "is so short that it is part of many numbers, and all of them may command"};
    return std::nullopt;
}

std::vector<Finding> CheckSettings(const SettingsFile& file) {
    std::vector<Finding> findings = Checker(file).Run();
    const std::vector<Finding> stray = StrayLines(file);
    findings.insert(findings.end(), stray.begin(), stray.end());
    return findings;
}

std::vector<Finding> CheckSettingsHere(const OperatorWorld& world, const SettingsFile& file) {
    std::vector<Finding> findings = CheckSettings(file);
    const std::string log = ToUtf8(file.Value("log-database"_setting));
    if (const std::string problem = world.logs.KindProblem(log); !problem.empty())
        findings.push_back(
            {FindingLevel::kWarning, "log-database", "names " + log + ", which " + problem});
    for (const PortState& port : LookAtPorts(world, file, 0))
        if (port.of_settings && !port.setting.empty())
            findings.push_back({port.level == PortState::Level::kError ? FindingLevel::kError
                                                                       : FindingLevel::kWarning,
                                port.setting, port.text});
    return findings;
}

} // namespace tarnex
