#include "adapters/sqlite/sqlite_log_table.h"
#include "service/service_status.h"
#include "tests/operator/operator_fixture.h"

#include <deque>

#include <sys/stat.h>

namespace tarnex {
namespace {

namespace fs = std::filesystem;

class Setup : public OperatorTest {
  protected:
    Setup() {
        world.settings_path = folder / "base/system/Tarnex.ini";
        world.history_path = folder / "base/history.db";
    }

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
        const std::string value = Output({"settings", "get", name});
        return value.substr(0, value.size() - 1);
    }
    // Every answer as a flag, some of them others.
    std::vector<std::string> Flags(std::map<std::string, std::string> changed = {}) {
        changed.merge(std::map<std::string, std::string>{{"--port", "search"},
                                                         {"--number-1", "13900000001"},
                                                         {"--number-2", "13900000002"},
                                                         {"--sms-centre", "+8613800100500"},
                                                         {"--mail-server", "none"}});
        std::vector<std::string> arguments{"setup"};
        for (const auto& [flag, answer] : changed)
            arguments.insert(arguments.end(), {flag, answer});
        return arguments;
    }

    std::deque<std::string> answers;
    std::vector<std::string> asked;
};

TEST_F(Setup, AsksUntilItHasWhatIsNeeded) {
    machine.ports = {"/dev/x"};
    machine.devices["/dev/x"] = {.there = true, .what = "FTDI"};
    AnswerWith({"port 6", "COM6", "", "139", "13900000001", "", "+8613800100500", "", "perhaps",
                "no", "yes", "mail.example.com:2525", "a@example.com", "b@example.com", "bob",
                "geheim", "perhaps", "", "n"});
    start = [this] {
        WriteFile(world.status_path, StatusText({}, {.process_id = 4711, .wall_now = now}));
        return "";
    };
    EXPECT_EQ(Run({"setup"}), 0) << err.str();
    EXPECT_TRUE(answers.empty());
    EXPECT_TRUE(Says("  /dev/x (FTDI)\n"));
    EXPECT_TRUE(Warns("That is not a device such as") && Warns("That must not be empty.") &&
                Warns("That is not yes or no.") && Warns("That is so short that it is part of"));
    EXPECT_EQ(asked[15], "Password at the mail server: (secret)");
    EXPECT_TRUE(asked.back().starts_with("Raise one harmless alarm"));
    EXPECT_EQ(asked[5], "Second alarm telephone number; with one telephone only, the same "
                        "[13900000001]: ");

    for (const auto& [name, value] : {std::pair("last-port", "6"),
                                      {"alarm-number-2", "13900000001"},
                                      {"sms-to-number-1", "1"},
                                      {"communication-alarm", "1"},
                                      {"power-alarm", "0"},
                                      {"send-again", "On"},
                                      {"sms-to-number-2", "0"}, // it is the same telephone
                                      {"mail-server", "mail.example.com:2525"},
                                      {"mail-login", "1"}})
        EXPECT_EQ(Setting(name), value) << name;
    EXPECT_EQ(Run({"settings", "check"}), 0) << out.str();
    EXPECT_EQ(SqliteLogTable().Open(FromUtf8(folder / "base/log.db")), "");
#ifndef _WIN32 // where the folder says who may read its files
    EXPECT_EQ(fs::status(ToPath(world.settings_path)).permissions() & fs::perms::others_all,
              fs::perms());
#endif
}

TEST_F(Setup, TakesEveryAnswerAsAFlag) {
    WriteFile(folder / "password", "geheim\nmore\n");
    EXPECT_EQ(Run(Flags({{"--port", folder / "usb-1"},
                         {"--mail-server", "mail"},
                         {"--mail-from", "a@b"},
                         {"--mail-to", "c@d"},
                         {"--mail-user", "u"},
                         {"--mail-password-file", folder / "password"},
                         {"--log-database", folder / "other/log.db"}})),
              0)
        << err.str();
    EXPECT_EQ(Setting("com1-device"), folder / "usb-1");
    EXPECT_EQ(Setting("sms-to-number-2"), "1");
    EXPECT_EQ(Setting("mail-password"), "geheim");
    EXPECT_TRUE(fs::exists(ToPath(folder / "other/log.db")));
}

TEST_F(Setup, WritesNothingWithoutEveryGoodAnswer) {
    Fails(64, {"setup", "--port", "search"},
          "(missing: --number-1 --number-2 --sms-centre --mail-server)");
    Fails(64, Flags({{"--mail-server", "mail.example.com"}}),
          "(missing: --mail-from --mail-to --mail-user)");
    Fails(65, Flags({{"--port", "ttyUSB0"}}), "--port: \"ttyUSB0\" is not a device such as");
    Fails(65, Flags({{"--number-1", "none"}}), "--number-1: \"none\" is not 3 to 20 digits");
    Fails(65, Flags({{"--sms-centre", ""}}), "--sms-centre: \"\" must not be empty");
    AnswerWith({"search", "13900000001"});
    Fails(64, {"setup"}, "nothing was written");
    AnswerWith(
        {"search", "1390000", "", "110", "", "", "", "mail", "a@b", "c@d", "u", "\xC3\xA4"}); // ä
    Fails(65, {"setup"}, "mail-password cannot hold this");
    EXPECT_FALSE(fs::exists(ToPath(folder / "base")));
}

TEST_F(Setup, TakesThePlaceOfAnUntouchedSampleAndOfOtherFilesWhenForced) {
    fs::create_directories(ToPath(folder / "base/system"));
    const std::string untouched = FileContent(TARNEX_PACKAGING "/Tarnex.ini.sample") + "[X]\n";
    WriteFile(world.settings_path, untouched);
    AnswerWith({"", "", "", ""}); // the switches, and the start
    start = [] { return ""; };
    Fails(1, Flags(), "the service was not started; it does not run");
    EXPECT_EQ(FileContent(world.settings_path + ".old"), untouched);
    world.ask = nullptr;

    WriteFile(world.settings_path, "precious");
    Fails(73, Flags(), "--force");
    EXPECT_EQ(FileContent(world.settings_path), "precious");
    std::vector<std::string> forced = Flags();
    forced.push_back("--force");
    EXPECT_EQ(Run(forced), 0) << err.str();
    EXPECT_EQ(FileContent(world.settings_path + ".old"), "precious");
    EXPECT_TRUE(Says("kept the log"));
    Fails(73, Flags(), "--force"); // what it wrote is somebody's
}

} // namespace
} // namespace tarnex
