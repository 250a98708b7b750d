#include "adapters/system/system_code_page.h"
#include "settings/load_settings.h"
#include "settings/setting_table.h"
#include "simulator/simulated_stores.h"
#include "tests/temp_folder.h"

#include <cerrno>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

const SystemCodePage kGbk("GBK");

LoadedSettings Load(const std::string& content, const Settings& previous = {}) {
    return ReadSettings(IniDocument(content, kGbk), previous);
}

// Whether a line of the text begins so and holds all parts.
bool HasLine(const std::string& text, const std::string& begin,
             const std::vector<std::string>& parts) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with(begin) && std::ranges::all_of(parts, [&](const std::string& part) {
                return line.find(part) != std::string::npos;
            }))
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
    EXPECT_TRUE(
        std::ranges::all_of(sample, [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); }));
    std::map<std::string, Text> values; // of the sample
    for (const auto& line : IniDocument::KeyLines(sample, kGbk)) {
        values["[" + ToUtf8(line.section) + "] " + ToUtf8(line.key)] = line.value;
        // A remark behind a value would be part of it.
        EXPECT_EQ(line.value.find_first_of(u"; "), Text::npos) << line.number;
    }

    std::set<std::string_view> names;
    for (const Setting& row : kSettings) {
        const std::string name(row.name);
        const std::string section = "[" + ToUtf8(row.section) + "]";
        const std::string key = ToUtf8(row.key);
        const std::string default_text(row.values.default_text);
        EXPECT_TRUE(names.insert(row.name).second) << name;
        const auto in_sample = values.extract(section + " " + key);
        EXPECT_EQ(in_sample.empty(), row.Kind() == SettingKind::kRecord) << name;
        if (!default_text.empty()) {
            EXPECT_EQ(ToUtf8(in_sample.mapped()), default_text) << name;
        }
        if (row.key != u"COM1" && (row.section == u"SerialPorts" || row.section == kDeviceRecord))
            continue; // the others are told with the first
        EXPECT_TRUE(HasLine(page, ".It Li " + section + " " + key + " Pq " + name, {})) << name;
        EXPECT_TRUE(HasLine(document, "| `" + section + "` |",
                            {"`" + key + "`", default_text, marks.at(row.in_force)}))
            << name;
    }
    EXPECT_TRUE(values.empty()) << values.begin()->first;
}

TEST(SettingTable, DefaultsAreWhatAnEmptyFileMeans) {
    std::string content;
    for (const Setting& row : kSettings)
        if (!row.values.default_text.empty())
            content += "[" + ToUtf8(row.section) + "]\n" + ToUtf8(row.key) + "=" +
                       std::string(row.values.default_text) + "\n";
    EXPECT_EQ(Load(content), LoadedSettings());
    EXPECT_EQ(Load(""), LoadedSettings());
}

TEST(LoadSettings, GatesCompareExactly) {
    EXPECT_FALSE(Load("[Service]\nEnable=Disable\n").enabled);
    EXPECT_TRUE(Load("[Service]\nEnable=disable\n").enabled);
    EXPECT_TRUE(Load("[Service]\nEnable=Disable \n").enabled);
    EXPECT_TRUE(Load("[Check]\nCheck1(13)=1\n").allowed);
    EXPECT_FALSE(Load("[Check]\nCheck1(13)= 1\n").allowed);
}

TEST(LoadSettings, EveryValueComesFromItsOwnKey) {
    // Switched on one by one: a swapped pair of keys shows.
    const auto on = [](int number) {
        return Load("[Check]\nCheck1(" + std::to_string(number) + ")=1\n").settings;
    };
    EXPECT_TRUE(on(58).ForwardFeeSMS);
    EXPECT_TRUE(on(5).SMSNotifyOn);
    EXPECT_TRUE(on(39).EmailNotifyOn);
    EXPECT_TRUE(on(42).SwitchCheck42);
    EXPECT_TRUE(on(43).SwitchCheck43);
    EXPECT_TRUE(on(6).QuietTimeOn);
    EXPECT_FALSE(on(7).AutoSearchOff);
    EXPECT_TRUE(Load("[Check]\nCheck1(7)=0\n").settings.AutoSearchOff);
    for (int day = 0; day < 7; ++day)
        EXPECT_TRUE(on(46 + day).QuietDay[day]) << day;
    for (int link = 0; link < 5; ++link)
        EXPECT_TRUE(on(8 + link).LinkEnabled[link]) << link;

    std::string content = "[Combo]\nCombo1(6)=3 times\n[Alarm]\nAlarmLabel(7)=S+E\n"
                          "[ControlLink]\nBindAddress= 127.0.0.9 "
                          "\n[Encoding]\nCodePage=UTF-8\n[Text]\nText1(37)=/x.db\n";
    for (int i = 0; i < 14; ++i)
        content += "Text1(" + std::to_string(38 + i) + ")=" + std::to_string(i) + ":00\n";
    content += "[SerialPorts]\n";
    for (int i = 0; i < 20; ++i)
        content += "COM" + std::to_string(i + 1) + "=/dev/" + std::to_string(i) + "\n";
    const LoadedSettings loaded = Load(content);
    EXPECT_EQ(loaded.settings.LogPath, u"/x.db");
    EXPECT_EQ(loaded.settings.SendCount, 3);
    EXPECT_EQ(loaded.settings.NotifyMode, u"S+E");
    EXPECT_EQ(loaded.start.bind_address, "127.0.0.9");
    EXPECT_EQ(loaded.start.code_page, "UTF-8");
    for (int i = 0; i < 14; ++i)
        EXPECT_EQ(loaded.settings.QuietTimes[i], ToText(i) + u":00");
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(loaded.start.device_paths[i], "/dev/" + std::to_string(i));
}

TEST(LoadSettings, ANumberBeyond16BitsKeepsTheOldOne) {
    Settings previous;
    previous.SendCount = 4;
    previous.SMSNotifyOn = true;
    const Settings now = Load("[Combo]\nCombo1(6)=32768\n", previous).settings;
    EXPECT_EQ(now.SendCount, 4);
    EXPECT_FALSE(now.SMSNotifyOn);
    EXPECT_EQ(Load("[Combo]\nCombo1(6)=\n", previous).settings.SendCount, 0);
}

TEST(ReadAtStart, AFileInTheMiddleOfAChangeIsReadAgain) {
    const std::string whole = "[Check]\nCheck1(13)=1\n[ControlLink]\nBindAddress=127.0.0.9\n";
    SimulatedSettingsStore store;
    for (const char* first : {"missing", "unreadable", "", "[Check]\nCheck1(13"}) {
        store.Readable = std::string_view(first) != "unreadable";
        if (std::string_view(first) == "missing")
            store.Delete();
        else
            store.SetContent(first);
        const SettingsReading reading = ReadAtStart(store, kGbk, [&] {
            store.Readable = true;
            store.SetContent(whole);
        });
        EXPECT_EQ(reading.content, whole) << first;
    }
    EXPECT_EQ(ReadAtStart(store, kGbk, [&] { store.Delete(); }).content, whole);
}

TEST(ReadAtStart, AReadingProblemHasOwnWordsAndFittingAdvice) {
    const std::error_code links(ELOOP, std::generic_category());
    EXPECT_EQ(Unreadable("f", links), "The settings file f cannot be read (too many links lead to "
                                      "one another)");
    const std::error_code full(EMFILE, std::generic_category());
    EXPECT_NE(ReadingAdvice(full, "rights").find("holds so many files open"), std::string::npos);
}

TEST(SettingsPath, IsBelowTheBaseFolder) {
    EXPECT_EQ(SettingsPath("/srv/win"), "/srv/win/system/Tarnex.ini");
    EXPECT_EQ(SettingsPath(""), "/var/lib/tarnexcomm/system/Tarnex.ini");
    EXPECT_EQ(SettingsPath(nullptr), "/var/lib/tarnexcomm/system/Tarnex.ini");
}

} // namespace
} // namespace tarnex
