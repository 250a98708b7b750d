#include "operator/settings_check.h"
#include "operator/suggestion.h"

#include <algorithm>
#include <set>

namespace tarnex {

namespace {

// Sections that other programs keep keys of their own in; only slips of the keyboard are told
// there.
constexpr TextView kSharedSections[] = {u"Check", u"Text", u"Combo", u"Alarm"};
// Sections of the service alone. What stands in any further one is somebody else's.
constexpr TextView kOwnSections[] = {u"Service",     u"Debug",    u"SerialPorts",
                                     u"ControlLink", u"Encoding", u"TarnexComm"};

// The debug console's, with some keys of the same names.
constexpr TextView kConsoleSection = u"TarnexDebug";

bool Among(std::span<const TextView> sections, TextView section) {
    return std::ranges::any_of(sections, [&](TextView s) { return EqualIgnoringCase(s, section); });
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
std::string Problem(const IniDocument::KeyLine& line) {
    if (EqualIgnoringCase(line.section, kConsoleSection))
        return "";
    if (const Setting* elsewhere = SameKeyElsewhere(line.key))
        return "has no effect there: the key belongs into section [" + ToUtf8(elsewhere->section) +
               "]";
    if (Among(kSharedSections, line.section)) {
        const std::string closest =
            IsControlName(line.key) ? "" : ClosestKey(line.section, line.key);
        return closest.empty() ? "" : "is unknown" + DidYouMean(closest);
    }
    if (Among(kOwnSections, line.section))
        return "is unknown" + DidYouMean(ClosestKey(line.section, line.key));
    return "";
}

} // namespace

std::vector<Finding> StrayLines(const SettingsFile& file) {
    std::vector<Finding> findings;
    std::set<std::pair<Text, Text>> seen;
    for (const auto& line : IniDocument::KeyLines(file.Content(), file.Encoding())) {
        const std::string name = "line " + std::to_string(line.number);
        const std::string key = "[" + ToUtf8(line.section) + "] " + ToUtf8(line.key);
        const bool first = seen.insert({LowerCase(line.section), LowerCase(line.key)}).second;
        std::string problem;
        if (!FindSetting(line.section, line.key))
            problem = Problem(line);
        else if (!first)
            problem = "stands in the file a second time and has no effect: the first line counts";
        if (!problem.empty())
            findings.push_back({Finding::Level::kWarning, name, key + " " + problem});
    }
    return findings;
}

} // namespace tarnex
