#include "tests/operator/operator_fixture.h"

#include <filesystem>

#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace tarnex {
namespace {

using nlohmann::json;

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
    std::vector<std::string> Named() {
        Run({"settings", "check", "--json"});
        std::vector<std::string> names;
        for (const json& finding : json::parse(out.str()))
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
        {1, {"code-page"}, {"Text1(32)=机房", "Text1(37)=/"}}, // not in GBK
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
