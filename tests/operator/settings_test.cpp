#include "operator/setting_catalog.h"
#include "tests/operator/operator_fixture.h"

#include <filesystem>

#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace tarnex {
namespace {

class SettingsCommands : public OperatorTest {};

TEST(SettingValue, TakesWhatMakesSenseAndNothingElse) {
    const std::string log_file = WordsOfThisSystem().log_file;
    const struct {
        const Setting& setting;
        std::vector<const char*> good;
        std::vector<const char*> bad;
    } rows[] = {
        {"link-0"_setting, {"on", "OFF", "yes", "0", "1"}, {"2", "maybe", " 1"}},
        {"unit-link"_setting, {"off"}, {"-1"}},
        {"service-enabled"_setting, {"on", "no"}, {"disable"}},
        {"send-count"_setting, {"0", "1", "20"}, {"21", "-1", "1x", "", "1.5", "99999999999"}},
        {"alarm-number-1"_setting,
         {"13900000001", "+8613900000001", "110"},
         {"12", "1 39", "abc", "+", "123456789012345678901"}},
        {"quiet-monday-from"_setting,
         {"07:05", "7:05", "23:59", "7:05:10"},
         {"24:00", "7", "07:60", "1x:y5"}},
        {"link-events-way"_setting, {"SMS", "Email", "S+E"}, {"sms", "both"}},
        {"log-database"_setting, {log_file.c_str()}, {"log.db"}},
        {"mail-server"_setting,
         {"mail", "mail.example.com:2525", "10.0.0.1"},
         {"mail:", "mail:0", "a b"}},
        {"mail-to"_setting, {"a@b.example"}, {"a", "a@", "@b", "a@b@c", "A <a@b>"}},
        {"bind-address"_setting,
         {"127.0.0.1", "0.0.0.0"},
         {"localhost", "1.2.3", "1.2.3.256", "1.2.3.4.5", "1.2.3.04", "::1"}},
        {"unit-name"_setting, {"机房 1"}, {"a\nb"}},
    };
    for (const auto& row : rows) {
        const Setting& setting = row.setting;
        for (const char* value : row.good)
            EXPECT_EQ(Objection(setting, StoredForm(setting, value)), "") << value;
        for (const char* value : row.bad)
            EXPECT_NE(Objection(setting, StoredForm(setting, value)), "")
                << setting.name << " " << value;
    }
    EXPECT_NE(Objection("unit-name"_setting, Text(129, u'x')), "");
}

TEST_F(SettingsCommands, ListShowsNamesValuesAndEffects) {
    const json list = Answer({"settings", "list", "quiet-monday", "Check1(8)"});
    ASSERT_EQ(list.size(), 4u);
    EXPECT_EQ(list[0]["name"], "link-0");
    EXPECT_EQ(list[2]["value"], "00:00");

    std::string name;
    for (int i = 0; i < 20; ++i)
        name += "机房";
    Run({"settings", "set", "unit-name", name});
    Run({"settings", "list", "unit-name"});
    EXPECT_TRUE(Says("  机房机房机房机房机房机…  the unit is called " + name)) << out.str();
    Run({"settings", "list", "--long", "unit-name"});
    EXPECT_TRUE(Says("value     " + name)) << out.str();
}

TEST_F(SettingsCommands, AMissingValueIsAskedForAndAPasswordNotListed) {
    world.ask = [](const std::string&, bool secret) { return secret ? "geheim" : "机房"; };
    EXPECT_EQ(Run({"settings", "set", "mail-password"}), 0);
    EXPECT_EQ(Run({"settings", "set", "unit-name"}), 0);
    EXPECT_EQ(Output({"settings", "get", "mail-password"}), "geheim\n");
    EXPECT_EQ(Output({"settings", "get", "unit-name"}), "机房\n");
    for (const char* form : {"mail", "--long", "--json"})
        EXPECT_EQ(Output({"settings", "list", form}).find("geheim"), std::string::npos);
    const std::string content = FileContent(settings);
    std::filesystem::remove(ToPath(settings));
    WriteFile(settings, content); // as a program makes it that thinks of nothing
    std::filesystem::permissions(ToPath(settings), std::filesystem::perms(0644));
    Run({"settings", "check"});
    EXPECT_TRUE(Says("can be read by every user of this machine"));
    EXPECT_FALSE(Says("%1"));
}

TEST_F(SettingsCommands, SetWritesOneValueAndUnsetTakesItAway) {
    std::string expected = FileContent(settings);
    Output({"settings", "set", "power-alarm", "on"});
    Output({"settings", "set", "unit-name", "--", "--x="}); // a value, no option
    Output({"settings", "set", "text1(32)", "机房"});
    expected.replace(expected.find("Check1(44)=0"), 12, "Check1(44)=1");
    expected.replace(expected.find("Text1(32)=Tarnex"), 16, "Text1(32)=\xBB\xFA\xB7\xBF");
    EXPECT_EQ(FileContent(settings), expected);

    WriteFile(settings, "[Text]\nText1(29)=mail\nText1(29)=second\n; end\n");
    Output({"settings", "unset", "mail-server"});
    EXPECT_EQ(FileContent(settings), "[Text]\n; end\n");
}

TEST_F(SettingsCommands, WarnsOfADangerousChange) {
    EXPECT_EQ(Run({"settings", "unset", "alarm-number-2"}), 0);
    EXPECT_TRUE(Says("EVERYBODY MAY COMMAND BY SMS"));
    EXPECT_TRUE(Warns("warning: alarm-number-2 is empty"));
    EXPECT_EQ(Run({"settings", "set", "quiet-time", "on"}), 0);
    EXPECT_TRUE(Warns("warning: quiet-time"));
    EXPECT_FALSE(Warns("alarm-number-2")); // nothing new
    EXPECT_EQ(Run({"settings", "set", "sms-to-number-1", "1"}), 0);
    EXPECT_EQ(err.str(), "");
}

TEST_F(SettingsCommands, RefusesNonsenseInOneLine) {
    const std::string before = FileContent(settings);
    Fails(65, {"settings", "set", "send-count", "many"}, "send-count: \"many\" is not 0 to 20");
    Fails(65, {"settings", "set", "send-count", " "}, "settings unset send-count");
    Fails(65, {"settings", "set", "unit-name", "\u0E01"}, "does not exist in GBK");
    Fails(64, {"settings", "set", "unit-port", "Com3"}, "written by the service alone");
    Fails(64, {"settings", "set", "sent-count", "1"}, "did you mean \"send-count\"?");
    Fails(64, {"settings", "list", "xyzzy"}, "there is no setting \"xyzzy\"");
    Fails(64, {"settings", "set", "send-count"}, "the value is missing"); // nobody to ask
    Fails(64, {"settings", "set", "send-count", "1", "2"}, "\"2\" is one word too many");
    Fails(64, {"settings"}, "the command is missing");
    Fails(64, {"report", "--days=1", "--days=2"}, "--days is given more than once");
    Fails(64, {"settings", "list", "--lnog"}, "did you mean \"--long\"?");
    EXPECT_EQ(FileContent(settings), before);
    // Where ports have names like this one it needs no path in front.
    const bool has_names = std::filesystem::path::preferred_separator == '\\';
    for (const char* name : {"COM25", "\\\\.\\COM25"})
        EXPECT_EQ(Run({"settings", "set", "com1-device", name}), has_names ? 0 : 65);
    world.settings_path = folder.Path();
    Fails(66, {"settings", "list"}, "");
}

TEST_F(SettingsCommands, TheCodePageIsThatOfTheTextsInTheFile) {
    for (const char* text : {"\xBB\xFA\xB7\xBF", "\xCA\xD4"}) { // the second could be UTF-8, too
        WriteFile(settings, "[Text]\nText1(32)=" + std::string(text) + "\n");
        Fails(65, {"settings", "set", "code-page", "UTF-8"}, words.text_converter);
    }
    WriteFile(settings, "[Text]\nText1(32)=\n");
    Output({"settings", "set", "code-page", "UTF-8"});
    Output({"settings", "set", "unit-name", "机房"});
    EXPECT_NE(FileContent(settings).find("Text1(32)=机房"), std::string::npos);
}

class SettingsCheck : public OperatorTest {
  protected:
    SettingsCheck() {
        chmod(settings.c_str(), 0600);
        WriteFile(folder / "log.db", "");
        const std::string log = folder / "log.db";
        const char* wanted[][2] = {
            {"alarm-number-1", "13900000001"}, {"alarm-number-2", "13900000002"},
            {"sms-centre", "+8613800100500"},  {"sms-to-number-1", "on"},
            {"mail-from", "a@example.com"},    {"mail-to", "b@example.com"},
            {"log-database", log.c_str()}};
        for (const auto& [name, value] : wanted)
            EXPECT_EQ(Run({"settings", "set", name, value}), 0);
    }
    // Puts line in the place of the one with its key; a ";" that hides the key goes.
    void Put(const std::string& line) {
        std::string content = FileContent(settings);
        const std::size_t at = content.find("\n" + line.substr(0, line.find('=') + 1));
        ASSERT_NE(at, std::string::npos) << line;
        const std::size_t end = content.find('\n', at + 1);
        content.replace(at + 1, end - at - 1, line.substr(line[0] == ';'));
        WriteFile(settings, content);
    }
    // The settings, or lines, that something is said about.
    // Each once: who may read a file that is written here depends on the system.
    std::vector<std::string> Named() {
        std::vector<std::string> names;
        for (const json& finding : Answer({"settings", "check"}))
            if (names.empty() || names.back() != finding["setting"])
                names.push_back(finding["setting"]);
        return names;
    }
    using Names = std::vector<std::string>;
};

TEST_F(SettingsCheck, AServiceRunsWithTheSampleAndObeysNobody) {
    WriteFile(settings, FileContent(TARNEX_PACKAGING "/Tarnex.ini.sample"));
    EXPECT_EQ(Run({"settings", "check"}), 1) << out.str(); // an error would end it or let all in
}

TEST_F(SettingsCheck, NamesEveryDangerAndNothingElse) {
    const struct {
        int status;
        Names names;
        std::vector<std::string> lines; // each in the place of the one with that key
    } rows[] = {
        {0, {}, {}},
        {2, {"run-allowed"}, {"Check1(13)= 1"}},
        {2, {"service-enabled"}, {"Enable=Disable"}},
        {2, {"alarm-number-1"}, {"Text1(34)=  "}},
        {1, {"alarm-number-2"}, {"Text1(35)=0000000"}},
        {2, {"alarm-number-2"}, {"Text1(35)=110"}},
        {1, {"sms-centre"}, {"Text1(36)=00000"}},
        {1, {"communication-alarm-time"}, {"combo1(5)="}},
        {1, {"unit-name-shown"}, {"Check1(57)="}},
        {1, {"link-1"}, {"Check1(9)=yes"}},
        {1, {"send-count"}, {"Combo1(6)=3x"}},
        {1, {"sms-to-number-1"}, {"Check1(42)=0"}},
        {1, {"mail-from"}, {"Text1(58)="}},
        {1, {"mail-login"}, {"Check1(40)=1"}},
        {1, {"mail-password"}, {"Text1(31)=secret"}},
        {1, {"mail-to"}, {"Text1(59)=b at example.com"}},
        {1, {"log-database"}, {"Text1(37)=/nowhere/log.db"}},
        {1, {"bind-address"}, {";BindAddress=0.0.0.0"}},
        {1, {"code-page"}, {";CodePage=latin1"}},
        {1, {"code-page"}, {"Text1(32)=机房", "Text1(37)=" + root}}, // not in GBK
        {1, {"link-events-way"}, {"AlarmLabel(7)=both"}},
        // One telephone needs each text once.
        {0, {}, {"Check1(43)=1"}},
        {1, {"sms-to-number-2"}, {"Check1(43)=1", "Text1(35)=13900000001"}},
        // A window over midnight is never quiet; 9:00 is shown as 09:00.
        {1, {"quiet-time"}, {"Check1(6)=1"}},
        {1, {"quiet-monday-from"}, {"Check1(6)=1", "Check1(47)=1", "Text1(40)=22:00"}},
        {0, {}, {"Check1(6)=1", "Check1(47)=1", "Text1(40)=9:00", "Text1(41)=22:00"}},
    };
    const std::string good = FileContent(settings);
    for (const auto& row : rows) {
        WriteFile(settings, good);
        for (const std::string& line : row.lines)
            Put(line);
        EXPECT_EQ(Run({"settings", "check"}), row.status) << out.str();
        EXPECT_EQ(Named(), row.names) << testing::PrintToString(row.lines);
    }
}

TEST_F(SettingsCheck, PointsOutWhatAnEditorHasMadeOfTheFile) {
    const std::string good = FileContent(settings);
    WriteFile(settings, "\xEF\xBB\xBF" + good);
    EXPECT_EQ(Named(), Names{"line 1"});
    WriteFile(settings, good + std::string(1, '\0'));
    EXPECT_EQ(Named(), Names{"file"});
    WriteFile(settings, good + "[Check]\nCheck1(44)=1\nChekc1(58)=0\nCheck1(1)=1\n"
                               "[Setting]\nCheck1(13)=1\n"
                               "[TarnexDebug]\nTelNo1=1\n"
                               "[Others]\nAnything=1\n"
                               "[Service]\nEnabel=1\nText1(99)=1\n");
    const auto line = "line " + std::to_string(std::ranges::count(good, '\n') + 2);
    EXPECT_EQ(Run({"settings", "check"}), 1);
    for (const std::string& said :
         {line + "  [Check] Check1(44) stands in the file a second time",
          std::string("[Setting] Check1(13) has no effect there: the key belongs into section "),
          std::string("[Check] Chekc1(58) is unknown (did you mean \"Check1(58)\"?)")})
        EXPECT_TRUE(Says(said)) << said << out.str();
    EXPECT_EQ(Named().size(), 5u) << out.str();
}

} // namespace
} // namespace tarnex
