#include "settings/load_settings.h"

namespace tarnex {

namespace {

bool IsOn(TextView value) {
    return value == u"1";
}

// How the index-th value of a row is stored.
using Store = void (*)(Settings& to, int index, TextView value);

template <bool Settings::*flag>
void Flag(Settings& to, int, TextView value) {
    to.*flag = IsOn(value);
}
template <bool Settings::*flag>
void OnAtZero(Settings& to, int, TextView value) {
    to.*flag = value == u"0";
}
template <Text Settings::*text>
void String(Settings& to, int, TextView value) {
    to.*text = value;
}
template <std::int16_t Settings::*number>
void Number(Settings& to, int, TextView value) {
    to.*number = LeadingInt16(value).value_or(to.*number);
}
template <auto flags>
void Flags(Settings& to, int index, TextView value) {
    (to.*flags)[index] = IsOn(value);
}
template <auto texts>
void Strings(Settings& to, int index, TextView value) {
    (to.*texts)[index] = value;
}

// The keys control(first), control(first + 1) ... of a section.
struct Setting {
    TextView section;
    TextView control;
    int first;
    int count;
    Store store;
};

// clang-format off
constexpr Setting kSettings[] = {
    {u"Check", u"Check1",     58,  1, Flag<&Settings::ForwardFeeSMS>},
    {u"Text",  u"Text1",      37,  1, String<&Settings::LogPath>},
    {u"Combo", u"Combo1",      6,  1, Number<&Settings::SendCount>},
    {u"Alarm", u"AlarmLabel",  7,  1, String<&Settings::NotifyMode>},
    {u"Check", u"Check1",      5,  1, Flag<&Settings::SMSNotifyOn>},
    {u"Check", u"Check1",     39,  1, Flag<&Settings::EmailNotifyOn>},
    {u"Check", u"Check1",      7,  1, OnAtZero<&Settings::AutoSearchOff>},
    {u"Check", u"Check1",     42,  1, Flag<&Settings::SwitchCheck42>},
    {u"Check", u"Check1",     43,  1, Flag<&Settings::SwitchCheck43>},
    {u"Check", u"Check1",      6,  1, Flag<&Settings::QuietTimeOn>},
    {u"Check", u"Check1",     46,  7, Flags<&Settings::QuietDay>},
    {u"Text",  u"Text1",      38, 14, Strings<&Settings::QuietTimes>},
    {u"Check", u"Check1",      8,  5, Flags<&Settings::LinkEnabled>},
};
// clang-format on

} // namespace

LoadedSettings ReadSettings(const IniDocument& file, const Settings& previous) {
    LoadedSettings loaded{.settings = previous};
    loaded.enabled = file.Get(u"Service", u"Enable") != u"Disable";
    for (const Setting& setting : kSettings)
        for (int i = 0; i < setting.count; ++i) {
            const Text key = Text(setting.control) + u"(" + ToText(setting.first + i) + u")";
            setting.store(loaded.settings, i, file.Get(setting.section, key));
        }
    loaded.allowed = IsOn(file.Get(u"Check", u"Check1(13)"));
    return loaded;
}

} // namespace tarnex
