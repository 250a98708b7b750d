#include "tests/operator/control_fixture.h"

#include <filesystem>

#include <nlohmann/json.hpp>
#include <sys/stat.h>

namespace tarnex {
namespace {

using nlohmann::json;

class SettingsCheck : public ControlTest {
  protected:
    SettingsCheck() {
        chmod(settings.c_str(), 0600);
        WriteFile(folder / "log.db", "");
        for (const auto& [name, value] :
             std::map<std::string, std::string>{{"alarm-number-1", "13900000001"},
                                                {"alarm-number-2", "13900000002"},
                                                {"sms-centre", "+8613800100500"},
                                                {"sms-to-number-1", "on"},
                                                {"mail-from", "a@example.com"},
                                                {"mail-to", "b@example.com"},
                                                {"log-database", folder / "log.db"}})
            EXPECT_EQ(Run({"settings", "set", name, value}), 0);
    }
    void Put(const std::string& line, const std::string& by) {
        std::string content = FileContent(settings);
        const std::size_t at = content.find("\n" + line);
        ASSERT_NE(at, std::string::npos) << line;
        const std::size_t end = content.find('\n', at + 1);
        WriteFile(settings, content.replace(at + 1, end - at - 1, by));
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
    Names names = Named();
    std::erase(names, "log-database"); // which this machine may have
    EXPECT_EQ(names, (Names{"alarm-number-1", "alarm-number-2", "sms-to-number-1", "sms-centre",
                            "mail-from", "mail-to"}));
}

TEST_F(SettingsCheck, FindsNothingInGoodSettings) {
    EXPECT_EQ(Run({"settings", "check"}), 0) << out.str();
    EXPECT_TRUE(Says("0 errors, 0 warnings"));
}

TEST_F(SettingsCheck, NamesEveryDanger) {
    const struct {
        const char* line; // the setting's line begins so
        const char* by;
        int status;
        Names names;
    } rows[] = {
        {"Check1(13)=", "; gone", 2, {"run-allowed"}},
        {"Check1(13)=", "Check1(13)= 1", 2, {"run-allowed"}},
        {"Enable=", "Enable=Disable", 2, {"service-enabled"}},
        {"Text1(34)=", "Text1(34)=", 2, {"alarm-number-1"}},
        {"Text1(34)=", "Text1(34)=  ", 2, {"alarm-number-1"}},
        {"Text1(35)=", "Text1(35)=0000000", 1, {"alarm-number-2"}},
        {"Text1(35)=", "Text1(35)=110", 2, {"alarm-number-2"}},
        {"Text1(36)=", "Text1(36)=00000", 1, {"sms-centre"}},
        {"combo1(5)=", "combo1(5)=", 1, {"communication-alarm-time"}},
        {"Check1(57)=", "; gone", 1, {"unit-name-shown"}},
        {"Check1(7)=", "Check1(7)=0", 1, {"unit-link"}},
        {"Check1(8)=", "Check1(8)=0", 1, {"link-0"}},
        {"Combo1(6)=", "Combo1(6)=0", 1, {"send-count"}},
        {"Combo1(6)=", "Combo1(6)=3x", 1, {"send-count"}},
        {"Check1(42)=", "Check1(42)=0", 1, {"sms-to-number-1"}},
        {"Check1(6)=", "Check1(6)=1", 1, {"quiet-time"}},
        {"Text1(58)=", "Text1(58)=", 1, {"mail-from"}},
        {"Check1(40)=", "Check1(40)=1", 1, {"mail-login"}},
        {"Text1(31)=", "Text1(31)=secret", 1, {"mail-password"}},
        {"Text1(59)=", "Text1(59)=b at example.com", 1, {"mail-to"}},
        {"Text1(37)=", "Text1(37)=/nowhere/log.db", 1, {"log-database"}},
        {"Text1(37)=", "Text1(37)=", 1, {"log-database"}},
        {";BindAddress=", "BindAddress=0.0.0.0", 1, {"bind-address"}},
        {";CodePage=", "CodePage=latin1", 1, {"code-page"}},
        {"Text1(32)=", "Text1(32)=机房", 1, {"code-page"}}, // not in GBK
        {"AlarmLabel(7)=", "AlarmLabel(7)=both", 1, {"link-events-way"}},
        {"Check1(9)=", "Check1(9)=yes", 1, {"link-1"}},
    };
    const std::string good = FileContent(settings);
    for (const auto& row : rows) {
        WriteFile(settings, good);
        Put(row.line, row.by);
        EXPECT_EQ(Run({"settings", "check"}), row.status) << row.by << "\n" << out.str();
        EXPECT_EQ(Named(), row.names) << row.by;
    }
}

TEST_F(SettingsCheck, OneTelephoneNeedsEachTextOnce) {
    Put("Check1(43)=", "Check1(43)=1");
    EXPECT_EQ(Named(), Names{});
    Put("Text1(35)=", "Text1(35)=13900000001");
    EXPECT_EQ(Named(), Names{"sms-to-number-2"});
}

TEST_F(SettingsCheck, AWindowOverMidnightIsNeverQuiet) {
    Put("Check1(6)=", "Check1(6)=1");
    Put("Check1(47)=", "Check1(47)=1");
    EXPECT_EQ(Named(), Names{});
    Put("Text1(40)=", "Text1(40)=22:00");
    EXPECT_EQ(Named(), Names{"quiet-monday-from"});
    Put("Text1(41)=", "Text1(41)=22:00");
    EXPECT_EQ(Named(), Names{});
    Put("Text1(40)=", "Text1(40)=9:00"); // shown as 09:00
    EXPECT_EQ(Named(), Names{});
}

TEST_F(SettingsCheck, PointsOutWhatAnEditorHasMadeOfTheFile) {
    const std::string good = FileContent(settings);
    WriteFile(settings, "\xEF\xBB\xBF" + good);
    EXPECT_EQ(Named(), Names{"line 1"});
    WriteFile(settings, good + std::string(1, '\0'));
    EXPECT_EQ(Named(), Names{"file"});
}

TEST_F(SettingsCheck, PointsOutLinesThatMeanNothing) {
    WriteFile(settings,
              FileContent(settings) + "[Check]\nCheck1(44)=1\n"
                                      "[Setting]\nCheck1(13)=1\n"
                                      "[TarnexDebug]\nTelNo1=1\n"
                                      "[Others]\nAnything=1\n"
                                      "[Service]\nEnabel=1\nText1(99)=1\n",
              std::ios::trunc);
    const std::string first =
        "line " + std::to_string(std::ranges::count(FileContent(settings), '\n') - 9);
    EXPECT_EQ(Run({"settings", "check"}), 1);
    EXPECT_TRUE(Says(first + "  [Check] Check1(44) stands in the file a second time")) << out.str();
    EXPECT_TRUE(
        Says("[Setting] Check1(13) has no effect there: the key belongs into section [Check]"));
    EXPECT_TRUE(Says("[Service] Enabel is unknown (did you mean \"Enable\"?)"));
    EXPECT_EQ(Named().size(), 4u) << out.str();

    Put("Check1(58)=0", "Chekc1(58)=0\nCheck1(1)=1");
    EXPECT_EQ(Run({"settings", "check"}), 1);
    EXPECT_TRUE(Says("[Check] Chekc1(58) is unknown (did you mean \"Check1(58)\"?)"));
    EXPECT_FALSE(Says("Check1(1) "));
}

} // namespace
} // namespace tarnex
