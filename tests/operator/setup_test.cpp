#include "adapters/sqlite/sqlite_log_table.h"
#include "operator/setup_questions.h"
#include "settings/ini_document.h"
#include "tests/operator/control_fixture.h"

#include <deque>
#include <filesystem>

#include <sys/stat.h>

namespace tarnex {
namespace {

namespace fs = std::filesystem;

class Setup : public ControlTest {
  protected:
    Setup() { world.settings_path = folder / "base/system/Tarnex.ini"; }

    void AnswerWith(std::deque<std::string> lines) {
        answers = std::move(lines);
        world.ask = [this](const std::string& prompt, bool secret) -> std::optional<std::string> {
            asked.push_back(prompt + (secret ? "(secret)" : ""));
            if (answers.empty())
                return std::nullopt;
            const std::string line = answers.front();
            answers.pop_front();
            return line;
        };
    }
    std::string Setting(const std::string& name) {
        EXPECT_EQ(Run({"settings", "get", name}), 0) << err.str();
        const std::string value = out.str();
        return value.substr(0, value.size() - 1);
    }
    const std::vector<std::string> kAllFlags{"setup",         "--port",       "search",
                                             "--number-1",    "13900000001",  "--number-2",
                                             "13900000002",   "--sms-centre", "+8613800100500",
                                             "--mail-server", "none"};

    std::deque<std::string> answers;
    std::vector<std::string> asked;
};

TEST_F(Setup, AsksUntilItHasWhatIsNeeded) {
    AnswerWith({"COM21", "COM6", "", "12 34", "13900000001", "", "+8613800100500",
                "mail.example.com:2525", "a@example.com", "b@example.com", "bob", "geheim"});
    EXPECT_EQ(Run({"setup"}), 0) << err.str();
    EXPECT_TRUE(answers.empty());
    EXPECT_TRUE(Says("wrote the settings"));
    EXPECT_TRUE(Warns("That is not a device such as"));
    EXPECT_TRUE(Warns("That must not be empty."));
    EXPECT_EQ(asked.back(), "Password at the mail server: (secret)");
    EXPECT_EQ(asked[5], "Second alarm telephone number; with one telephone only, the same "
                        "[13900000001]: ");

    const std::map<std::string, std::string> expected{
        {"last-port", "6"},
        {"com1-device", ""},
        {"alarm-number-1", "13900000001"},
        {"alarm-number-2", "13900000001"},
        {"sms-centre", "+8613800100500"},
        {"sms-to-number-1", "1"},
        {"sms-to-number-2", "0"}, // it is the same telephone
        {"mail-server", "mail.example.com:2525"},
        {"mail-user", "bob"},
        {"mail-password", "geheim"},
        {"mail-login", "1"},
        {"log-database", folder / "base/log.db"}};
    for (const auto& [name, value] : expected)
        EXPECT_EQ(Setting(name), value) << name;
    EXPECT_EQ(Run({"settings", "check"}), 0) << out.str();
    EXPECT_EQ(SqliteLogTable().Open(FromUtf8(folder / "base/log.db")), "");
    EXPECT_EQ(fs::status(world.settings_path).permissions() & fs::perms::others_all, fs::perms());
}

TEST_F(Setup, TakesEveryAnswerAsAFlag) {
    WriteFile(folder / "password", "geheim\nmore\n");
    std::vector<std::string> arguments = kAllFlags;
    arguments[2] = "/dev/serial/by-id/usb-1";
    arguments.back() = "mail";
    arguments.insert(arguments.end(), {"--mail-from", "a@b", "--mail-to", "c@d", "--mail-user", "u",
                                       "--mail-password-file", folder / "password",
                                       "--log-database", folder / "other/log.db"});
    EXPECT_EQ(Run(arguments), 0) << err.str();
    EXPECT_EQ(Setting("com1-device"), "/dev/serial/by-id/usb-1");
    EXPECT_EQ(Setting("last-port"), "1");
    EXPECT_EQ(Setting("sms-to-number-2"), "1");
    EXPECT_EQ(Setting("mail-password"), "geheim");
    EXPECT_TRUE(fs::exists(folder / "other/log.db"));
    // Comments and everything else stay as in the sample.
    EXPECT_NE(FileContent(world.settings_path).find("; ##  WARNING: the two numbers"),
              std::string::npos);
}

TEST_F(Setup, WithoutATerminalNamesTheMissingFlags) {
    EXPECT_EQ(Run({"setup", "--port", "search"}), 64);
    EXPECT_NE(Error().find("(missing: --number-1 --number-2 --sms-centre --mail-server)"),
              std::string::npos);
    std::vector<std::string> arguments = kAllFlags;
    arguments.back() = "mail.example.com";
    EXPECT_EQ(Run(arguments), 64);
    EXPECT_NE(Error().find("(missing: --mail-from --mail-to --mail-user)"), std::string::npos);
    EXPECT_FALSE(fs::exists(folder / "base"));

    AnswerWith({"search", "13900000001"});
    EXPECT_EQ(Run({"setup"}), 64);
    EXPECT_NE(Error().find("nothing was written"), std::string::npos);
    EXPECT_FALSE(fs::exists(folder / "base"));
}

TEST_F(Setup, RefusesWrongAnswersAndOldFiles) {
    const struct {
        std::size_t flag;
        const char* answer;
        const char* error;
    } rows[] = {{2, "ttyUSB0", "--port: \"ttyUSB0\" is not a device such as"},
                {2, "COM0", "--port"},
                {4, "none", "--number-1: \"none\" is not 3 to 20 digits"},
                {8, "", "--sms-centre: \"\" must not be empty"},
                {10, "mail:x", "--mail-server: \"mail:x\" is not a host"}};
    for (const auto& row : rows) {
        std::vector<std::string> arguments = kAllFlags;
        arguments[row.flag] = row.answer;
        EXPECT_EQ(Run(arguments), 65) << row.answer;
        EXPECT_NE(Error().find(row.error), std::string::npos) << err.str();
    }
    AnswerWith({"search", "110", "110", "110", "mail", "a@b", "c@d", "u", "\xC3\xA4"}); // ä
    EXPECT_EQ(Run({"setup"}), 65);
    EXPECT_NE(Error().find("mail-password cannot hold this"), std::string::npos);
    EXPECT_FALSE(fs::exists(folder / "base"));

    fs::create_directories(folder / "base/system");
    WriteFile(world.settings_path, "precious");
    EXPECT_EQ(Run(kAllFlags), 73);
    EXPECT_NE(Error().find("--force"), std::string::npos);
    EXPECT_EQ(FileContent(world.settings_path), "precious");
    std::vector<std::string> forced = kAllFlags;
    forced.push_back("--force");
    EXPECT_EQ(Run(forced), 0) << err.str();
    EXPECT_EQ(FileContent(world.settings_path + ".old"), "precious");
    EXPECT_EQ(Run(forced), 0);
    EXPECT_TRUE(Says("kept the log"));
}

TEST_F(Setup, TakesThePlaceOfASampleThatNobodyHasSetUp) {
    fs::create_directories(folder / "base/system");
    const std::string untouched = FileContent(TARNEX_PACKAGING "/Tarnex.ini.sample") + "[X]\n";
    WriteFile(world.settings_path, untouched);
    EXPECT_EQ(Run(kAllFlags), 0) << err.str();
    EXPECT_EQ(Setting("alarm-number-1"), "13900000001");
    EXPECT_EQ(FileContent(world.settings_path + ".old"), untouched);
    EXPECT_EQ(Run(kAllFlags), 73) << "these are somebody's";
}

} // namespace
} // namespace tarnex
