#include "adapters/sqlite/sqlite_log_table.h"
#include "tests/operator/control_fixture.h"

#include <filesystem>

#include <nlohmann/json.hpp>

namespace tarnex {
namespace {

namespace fs = std::filesystem;
using namespace std::literals;
using nlohmann::json;

class LogCommands : public ControlTest {
  protected:
    LogCommands() { Run({"settings", "set", "log-database", path}); }
    void Append(const Text& message, const std::string& file = "") {
        SqliteLogTable table;
        ASSERT_EQ(table.Open(FromUtf8(file.empty() ? path : file)), "");
        LogRow row;
        row[1] = u"2024-05-06";
        row[2] = u"08:00:40";
        row[3] = u"Out";
        row[4] = u"1Nex";
        row[5] = message;
        row[9] = u"Yes";
        row[12] = 7;
        ASSERT_EQ(table.Append(row), "");
    }
    const std::string path = folder / "log.db";
};

TEST_F(LogCommands, CreateMakesWhatTheServiceUsesAndOverwritesNothing) {
    WriteFile(path + ".new", "left over");
    EXPECT_EQ(Run({"log", "create"}), 0) << err.str();
    EXPECT_EQ(out.str(), "made " + path + "\n");
    Append(u"first");
    EXPECT_EQ(Run({"log", "create"}), 73);
    EXPECT_NE(Error().find("is there already"), std::string::npos);
    EXPECT_EQ(Run({"log", "tail", "--once"}), 0);
    EXPECT_TRUE(Says("first"));
    EXPECT_FALSE(fs::exists(path + ".new"));
}

TEST_F(LogCommands, SayWhatStandsInTheWay) {
    const struct {
        std::vector<std::string> arguments;
        int status;
        const char* error;
    } rows[] = {
        {{"create", folder / "none/log.db"}, 73, "its folder is missing"},
        {{"create", "--schema", folder / "none.sql"}, 66, "--schema"},
        {{"create", "--schema", settings}, 73, "cannot be made"},
        {{"tail", "--once"}, 66, "tarnexctl log create"},
        {{"tail", settings}, 74, "is not an SQLite database"},
        {{"tail", folder.Path()}, 66, "name a file"},
        {{"tail", "--lines", "many"}, 64, "--lines"},
        {{"create", "--shcema", "x"}, 64, "did you mean \"--schema\"?"},
    };
    for (auto row : rows) {
        row.arguments.insert(row.arguments.begin(), "log");
        EXPECT_EQ(Run(row.arguments), row.status) << err.str();
        EXPECT_NE(Error().find(row.error), std::string::npos) << err.str();
        EXPECT_FALSE(fs::exists(path));
    }
    WriteFile(folder / "bad.sql", "CREATE TABLE Log (a, b);");
    EXPECT_EQ(Run({"log", "create", "--schema", folder / "bad.sql"}), 73);
    EXPECT_NE(Error().find("2 columns instead of 13"), std::string::npos);
    Run({"settings", "unset", "log-database"});
    EXPECT_EQ(Run({"log", "tail"}), 65);
    Error();
}

TEST_F(LogCommands, TailShowsTheLastRowsAndThenNewOnes) {
    Run({"log", "create"});
    for (int i = 1; i <= 5; ++i)
        Append(u"消息" + ToText(i));
    pauses_left = 3;
    on_pause = [this] {
        if (pauses_left == 3)
            Append(u"new\x1b[31m\u202e"s + u'\0' + u"end");
        if (pauses_left == 2) { // rotated: the next file begins at its own first row
            for (const char* part : {"", "-wal", "-shm"})
                fs::rename(path + part, path + ".old" + part);
            EXPECT_EQ(logs.Create(path, FileContent(TARNEX_PACKAGING "/log-schema.sql")), "");
            Append(u"after the rotation");
        }
    };
    EXPECT_EQ(Run({"log", "tail", "--lines", "2"}), 0) << err.str();
    EXPECT_EQ(out.str(),
              "4       2024-05-06  08:00:40  Out  1Nex   SMS       消息4\n"
              "5       2024-05-06  08:00:40  Out  1Nex   SMS       消息5\n"
              "6       2024-05-06  08:00:40  Out  1Nex   SMS       new\\x1B[31m\\u202E\\x00end\n"
              "1       2024-05-06  08:00:40  Out  1Nex   SMS       after the rotation\n");

    EXPECT_EQ(Run({"log", "tail", "--lines", "0", "--once"}), 0);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(Run({"log", "tail", "--json", "--once"}), 0);
    const json row = json::parse(out.str());
    EXPECT_EQ(row["message"], "after the rotation");
    EXPECT_EQ(row["by_mail"], nullptr);
    EXPECT_EQ(row["detail"], "7");
}

} // namespace
} // namespace tarnex
