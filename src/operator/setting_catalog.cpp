#include "operator/setting_catalog.h"

#include "mail/server_address.h"
#include "operator/suggestion.h"
#include "platform/calendar_text.h"
#include "platform/file_path.h"
#include "settings/ini_document.h"

#include <algorithm>
#include <deque>

namespace tarnex {

namespace {

constexpr std::size_t kShortestPhone = 3;
constexpr std::size_t kLongestPhone = 20;

bool AllDigits(TextView text) {
    return !text.empty() && std::ranges::all_of(text, IsDigit);
}

bool IsPhone(TextView value) {
    const TextView digits = value.starts_with(u'+') ? value.substr(1) : value;
    return AllDigits(digits) && digits.size() >= kShortestPhone && digits.size() <= kLongestPhone;
}

bool IsNumberIn(TextView value, int lowest, int highest) {
    return AllDigits(value) && value.size() <= 5 && LeadingNumber(value) >= lowest &&
           LeadingNumber(value) <= highest;
}

// What the service can listen at: no part may begin with a needless zero.
bool IsIpAddress(TextView value) {
    for (int part = 0; part < 4; ++part) {
        const std::size_t dot = value.find(u'.');
        const TextView number = value.substr(0, dot);
        if (!IsNumberIn(number, 0, 255) || (number.size() > 1 && number.starts_with(u'0')) ||
            (part < 3) != (dot != TextView::npos))
            return false;
        value.remove_prefix(part < 3 ? dot + 1 : 0);
    }
    return true;
}

bool IsMailAddress(TextView value) {
    const std::size_t at = value.find(u'@');
    return at != TextView::npos && at > 0 && at + 1 < value.size() &&
           value.find_first_of(u" <>,;", 0) == TextView::npos &&
           value.find(u'@', at + 1) == TextView::npos;
}

std::vector<std::string> Choices(const Setting& setting) {
    std::vector<std::string> choices(1);
    for (const char c : setting.values.choices)
        if (c == '|')
            choices.emplace_back();
        else
            choices.back() += c;
    return choices;
}

bool IsChoice(const Setting& setting, TextView value) {
    return std::ranges::count(Choices(setting), ToUtf8(value)) > 0;
}

bool HasControlCharacters(TextView value) {
    return std::ranges::any_of(value, IsControl);
}

// "COM25", which stands for a path where these have backslashes, or "NUL", behind which is nothing.
bool IsPortName(const std::string& name) {
    const bool numbered = name.size() > 3 &&
                          EqualIgnoringCase(FromUtf8(name.substr(0, 3)), u"COM") &&
                          name.find_first_not_of("0123456789", 3) == name.npos;
    return numbered || EqualIgnoringCase(FromUtf8(name), u"NUL");
}

// Two backslashes begin the path of a device or a shared folder, which not every library takes for
// absolute.
bool IsWholePath(const Setting& setting, const std::string& path) {
    constexpr bool kBackslashes = std::filesystem::path::preferred_separator == '\\';
    const bool port = TextView(setting.section) == u"SerialPorts" && IsPortName(path);
    return ToPath(path).is_absolute() || (kBackslashes && (port || path.starts_with("\\\\")));
}

bool Fits(const Setting& setting, TextView value) {
    using enum SettingKind;
    switch (setting.Kind()) {
    case kSwitch:
        return value == setting.values.on || value == setting.values.off;
    case kNumber:
        return IsNumberIn(value, setting.values.lowest, setting.values.highest);
    case kPhone:
        return IsPhone(value);
    case kTime:
        return IsTimeOfDay(value);
    case kChoice:
        return IsChoice(setting, value);
    case kPath:
        return IsWholePath(setting, ToUtf8(value));
    case kServer:
        return ParseServerAddress(value).has_value() && value.find(u' ') == TextView::npos;
    case kMailAddress:
        return IsMailAddress(value);
    case kIpAddress:
        return IsIpAddress(value);
    case kText:
    case kPassword:
    case kRecord:
        return true;
    }
    return true;
}

// "a, b or c"
std::string Alternatives(const std::vector<std::string>& words) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i)
        text += (i == 0 ? "" : i + 1 < words.size() ? ", " : " or ") + words[i];
    return text;
}

// What counts where no value is set: the default text, or the device of the port.
std::string Default(const Setting& setting, const SerialPaths& ports) {
    if (setting.section != "com1-device"_setting.section)
        return std::string(setting.values.default_text);
    return ports.at(std::size_t(LeadingNumber(setting.key.substr(3))) - 1);
}

bool HasText(const Setting& setting, TextView value) {
    if (setting.Kind() == SettingKind::kNumber)
        return LeadingInt16(value).value_or(0) > 0;
    return !Trim(value).empty();
}

struct Catalog {
    Catalog() : settings(kSettings.begin(), kSettings.end()) {
        for (const Setting& setting : kSettings)
            if (!setting.record.empty())
                settings.push_back(Record(setting));
    }

    Setting Record(const Setting& of) {
        const std::string name(of.name);
        return {.group = "last-port"_setting.group,
                .section = kDeviceRecord,
                .key = of.record,
                .name = texts.emplace_back("written-" + name),
                .values = "last-port"_setting.values,
                .in_force = "last-port"_setting.in_force,
                .meaning = texts.emplace_back(
                    name + " as last written into the unit (\"@v@\": not known)"),
                .when_set = "{}",
                .when_not_set = "not written yet"};
    }

    std::deque<std::string> texts; // of the records
    std::vector<Setting> settings;
};

} // namespace

const std::vector<Setting>& SettingCatalog() {
    static const Catalog catalog;
    return catalog.settings;
}

const Setting* FindSetting(const std::string& name) {
    const Text wanted = FromUtf8(name);
    const auto found = std::ranges::find_if(SettingCatalog(), [&](const Setting& setting) {
        return EqualIgnoringCase(wanted, FromUtf8(setting.name)) ||
               EqualIgnoringCase(wanted, setting.key) ||
               EqualIgnoringCase(wanted, Text(setting.section) + u"/" + Text(setting.key));
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
        names.insert(names.end(), {std::string(setting.name), ToUtf8(setting.key)});
    return Closest(name, names);
}

std::string AllowedValues(const Setting& setting) {
    using enum SettingKind;
    switch (setting.Kind()) {
    case kSwitch:
        return "on or off";
    case kNumber:
        return std::to_string(setting.values.lowest) + " to " +
               std::to_string(setting.values.highest);
    case kPhone:
        return std::to_string(kShortestPhone) + " to " + std::to_string(kLongestPhone) +
               " digits, \"+\" in front allowed";
    case kTime:
        return "a time of day as hh:mm";
    case kChoice:
        return Alternatives(Choices(setting));
    case kPath:
        return "an absolute path";
    case kServer:
        return "a host, or host:port with a port from 1 to 65535";
    case kMailAddress:
        return "one mail address";
    case kIpAddress:
        return "an IPv4 address such as 127.0.0.1";
    case kText:
    case kPassword:
        return "a text of 1 to " + std::to_string(kLongestValue) + " characters";
    case kRecord:
        return "written by the service";
    }
    return "";
}

Text StoredForm(const Setting& setting, const std::string& typed) {
    const Text text = FromUtf8(typed);
    if (setting.Kind() != SettingKind::kSwitch)
        return text;
    for (const TextView word : {u"on", u"yes", u"true", u"1"})
        if (EqualIgnoringCase(text, word))
            return Text(setting.values.on);
    for (const TextView word : {u"off", u"no", u"false", u"0"})
        if (EqualIgnoringCase(text, word))
            return Text(setting.values.off);
    return text;
}

std::string Objection(const Setting& setting, TextView value) {
    if (value.size() > kLongestValue)
        return "has " + std::to_string(value.size()) + " characters; only the first " +
               std::to_string(kLongestValue) + " count";
    if (HasControlCharacters(value))
        return "contains control characters";
    return Fits(setting, value) ? "" : "is not " + AllowedValues(setting);
}

std::string Effect(const Setting& setting, TextView value, const SerialPaths& ports) {
    const bool set =
        setting.Kind() == SettingKind::kSwitch ? IsOn(setting, value) : HasText(setting, value);
    std::string effect(set ? setting.when_set : setting.when_not_set);
    const std::size_t at = effect.find("{}");
    if (at == std::string::npos)
        return effect;
    const std::string shown = !set ? Default(setting, ports)
                              : setting.Kind() == SettingKind::kTime
                                  ? ToUtf8(FormattedHourMinute(value))
                                  : ToUtf8(Trim(value));
    return effect.replace(at, 2, shown);
}

} // namespace tarnex
