#include "adapters/system/system_code_page.h"
#include "settings/load_settings.h"
#include "settings/setting_table.h"
#include "simulator/simulated_stores.h"
#include "tests/temp_folder.h"

#include <map>
#include <regex>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

const SystemCodePage kCodePage("GBK");

LoadedSettings Load(const std::string& content, const Settings& previous = {}) {
    return ReadSettings(IniDocument(content, kCodePage), previous);
}

// Whether a line of the text holds all parts.
bool HasLine(const std::string& text, const std::vector<std::string>& parts) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (std::ranges::all_of(parts, [&](auto& part) { return line.find(part) != line.npos; }))
            return true;
    return false;
}

TEST(SettingTable, TheSampleAndTheDocumentsTellOfEveryRow) {
    const std::map<std::string_view, std::string> marks{
        {table::kReload, "| 10 s"},   {table::kCheck, "| check |"}, {table::kMail, "| mail |"},
        {table::kReset, "| reset |"}, {table::kStart, "| start |"}, {table::kByService, "| – |"}};
    const std::string page = FileContent(TARNEX_PACKAGING "/man/Tarnex.ini.5");
    const std::string document = FileContent(TARNEX_PACKAGING "/../docs/settings.md");
    const std::string sample =
        std::regex_replace(FileContent(TARNEX_PACKAGING "/Tarnex.ini.sample"),
                           std::regex("\n;(COM|BindAddress|CodePage)"), "\n$1");
    std::map<std::string, std::string> values; // of the sample, in ASCII
    for (const auto& line : IniDocument::KeyLines(sample, kCodePage)) {
        const std::string value = ToUtf8(line.value);
        EXPECT_EQ(value.size(), line.value.size()) << line.number;
        EXPECT_EQ(value.find_first_of("; "), value.npos) << "a remark would be part of the value";
        values["[" + ToUtf8(line.section) + "] " + ToUtf8(line.key)] = value;
    }

    std::set<std::string_view> names;
    std::string defaults;
    for (const Setting& row : kSettings) {
        const std::string name(row.name), default_text(row.values.default_text);
        const std::string section = "[" + ToUtf8(row.section) + "]", key = ToUtf8(row.key);
        EXPECT_TRUE(names.insert(row.name).second) << name;
        const auto in_sample = values.extract(section + " " + key);
        EXPECT_EQ(in_sample.empty(), row.Kind() == SettingKind::kRecord) << name;
        if (!default_text.empty()) {
            EXPECT_EQ(in_sample.mapped(), default_text) << name;
            defaults += section + "\n" + key + "=" + default_text + "\n";
        }
        if (row.key != u"COM1" && (row.section == u"SerialPorts" || row.section == kDeviceRecord))
            continue; // the others are told with the first
        EXPECT_TRUE(HasLine(page, {".It Li " + section + " " + key + " Pq " + name})) << name;
        EXPECT_TRUE(HasLine(document, {"| `" + section + "` |", "`" + key + "`", "`" + name + "`",
                                       default_text, marks.at(row.in_force)}))
            << name;
    }
    EXPECT_TRUE(values.empty()) << values.begin()->first;
    EXPECT_EQ(Load(defaults), LoadedSettings());
    EXPECT_EQ(Load(""), LoadedSettings());
}

TEST(LoadSettings, EveryValueComesFromItsOwnKey) {
    // Switched on one by one: a swapped pair of keys shows.
    const auto on = [](int number) {
        return Load("[Check]\nCheck1(" + std::to_string(number) + ")=1\n").settings;
    };
    for (const auto& [number, field] : {std::pair(58, &Settings::ForwardFeeSMS),
                                        {5, &Settings::SMSNotifyOn},
                                        {39, &Settings::EmailNotifyOn},
                                        {42, &Settings::SwitchCheck42},
                                        {43, &Settings::SwitchCheck43},
                                        {6, &Settings::QuietTimeOn}})
        EXPECT_TRUE(on(number).*field) << number;
    EXPECT_TRUE(Load("[Check]\nCheck1(7)=0\n").settings.AutoSearchOff);
    EXPECT_TRUE(Load("[Check]\nCheck1(13)=1\n").allowed);
    EXPECT_FALSE(Load("[Check]\nCheck1(13)= 1\n").allowed);
    EXPECT_FALSE(Load("[Service]\nEnable=Disable\n").enabled);
    EXPECT_TRUE(Load("[Service]\nEnable=Disable \n").enabled);
    for (int day = 0; day < 7; ++day)
        EXPECT_TRUE(on(46 + day).QuietDay[day]) << day;
    for (int link = 0; link < 5; ++link)
        EXPECT_TRUE(on(8 + link).LinkEnabled[link]) << link;

    std::string content = "[Combo]\nCombo1(6)=3 times\n[Alarm]\nAlarmLabel(7)=S+E\n"
                          "[ControlLink]\nBindAddress= 127.0.0.9 \n"
                          "[Encoding]\nCodePage=UTF-8\n[Text]\nText1(37)=/x.db\n";
    LoadedSettings expected;
    expected.settings.LogPath = u"/x.db";
    expected.settings.SendCount = 3;
    expected.settings.NotifyMode = u"S+E";
    expected.start.bind_address = "127.0.0.9";
    expected.start.code_page = "UTF-8";
    for (int i = 0; i < 14; ++i) {
        content += "Text1(" + std::to_string(38 + i) + ")=" + std::to_string(i) + ":00\n";
        expected.settings.QuietTimes[i] = ToText(i) + u":00";
    }
    content += "[SerialPorts]\n";
    for (int i = 0; i < 20; ++i) {
        content += "COM" + std::to_string(i + 1) + "=/dev/" + std::to_string(i) + "\n";
        expected.start.device_paths[i] = "/dev/" + std::to_string(i);
    }
    EXPECT_EQ(Load(content), expected);
}

TEST(LoadSettings, ANumberBeyond16BitsKeepsTheOldOne) {
    const Settings previous = Load("[Combo]\nCombo1(6)=4\n[Check]\nCheck1(5)=1\n").settings;
    EXPECT_EQ(Load("[Combo]\nCombo1(6)=32768\n", previous), Load("[Combo]\nCombo1(6)=4\n"));
    EXPECT_EQ(Load("[Combo]\nCombo1(6)=\n", previous), LoadedSettings());
}

TEST(ReadAtStart, AFileInTheMiddleOfAChangeIsReadAgain) {
    const std::string whole = "[Check]\nCheck1(13)=1\n[ControlLink]\nBindAddress=127.0.0.9\n";
    SimulatedSettingsStore store;
    for (const char* first : {"missing", "unreadable", "", "[Check]\nCheck1(13"}) {
        store.SetContent(first);
        store.Readable = store.Read().content != "unreadable";
        if (store.Read().content == "missing")
            store.Delete();
        const SettingsReading reading = ReadAtStart(store, kCodePage, [&] {
            store.Readable = true;
            store.SetContent(whole);
        });
        EXPECT_EQ(reading.content, whole) << first;
    }
    EXPECT_EQ(ReadAtStart(store, kCodePage, [&] { store.Delete(); }).content, whole);
}

TEST(ReadAtStart, AReadingProblemHasOwnWordsAndFittingAdvice) {
    EXPECT_EQ(Unreadable("f", std::make_error_code(std::errc::too_many_symbolic_link_levels)),
              "The settings file f cannot be read (too many links lead to one another)");
    EXPECT_TRUE(Unreadable("f", std::make_error_code(std::errc::is_a_directory))
                    .ends_with("(it is no ordinary file)"));
    EXPECT_TRUE(Unreadable("f", std::make_error_code(std::errc::device_or_resource_busy))
                    .ends_with("(another program keeps it open)"));
    EXPECT_EQ(ReadingAdvice(std::make_error_code(std::errc::too_many_files_open), "rights"),
              "End what holds so many files open, or raise the limit.");
}

TEST(SettingsPath, IsBelowTheBaseFolder) {
    SystemWords words;
    words.settings_folder = "/var/data";
    // Written in one way, whatever way WINDIR is written.
    EXPECT_EQ(ToPath(SettingsPath("/srv/win", words)).native(),
              ToPath("/srv/win/system/Tarnex.ini").make_preferred().native());
    EXPECT_EQ(ToPath(SettingsPath("", words)), ToPath("/var/data/system/Tarnex.ini"));
}

} // namespace
} // namespace tarnex
