#include "adapters/sqlite/sqlite_log_table.h"
#include "tests/operator/operator_fixture.h"

#include <nlohmann/json.hpp>

namespace tarnex {
namespace {

namespace fs = std::filesystem;
using namespace std::literals;

class LogCommands : public OperatorTest {
  protected:
    LogCommands() { Run({"settings", "set", "log-database", path}); }
    void Append(const Text& message) {
        SqliteLogTable table;
        ASSERT_EQ(table.Open(FromUtf8(path)), "");
        LogRow row;
        const Text values[] = {u"2024-05-06", u"08:00:40", u"Out", u"1Nex", message};
        std::copy(std::begin(values), std::end(values), row.begin() + 1);
        row[9] = u"Yes";
        row[12] = 7;
        ASSERT_EQ(table.Append(row), "");
    }
    const std::string path = folder / "log.db";
};

TEST_F(LogCommands, CreateMakesWhatTheServiceUsesAndOverwritesNothing) {
    WriteFile(path + ".new", "left over");
    EXPECT_EQ(Output({"log", "create"}), "made " + path + "\n");
    Append(u"first");
    Fails(73, {"log", "create"}, "is there already");
    EXPECT_NE(Output({"log", "tail", "--once"}).find("first"), std::string::npos);
    EXPECT_FALSE(fs::exists(ToPath(path + ".new")));
}

TEST_F(LogCommands, SayWhatStandsInTheWay) {
    WriteFile(folder / "bad.sql", "CREATE TABLE Log (a, b);");
    Fails(73, {"log", "create", folder / "none/log.db"}, "its folder is missing");
    Fails(66, {"log", "create", "--schema", folder / "none.sql"}, "--schema");
    Fails(73, {"log", "create", "--schema", folder / "bad.sql"}, "2 columns instead of 13");
    Fails(66, {"log", "tail", "--once"}, "tarnexctl log create");
    WriteFile(folder / "a.mdb", std::string("\0\1\0\0Standard Jet DB", 19));
    EXPECT_EQ(Run({"settings", "set", "log-database", folder / "a.mdb"}), 0);
    EXPECT_TRUE(Warns("is an Access database, ")) << err.str();
    Fails(74, {"log", "tail", "--once"}, "is an Access database, ");
    EXPECT_FALSE(fs::exists(ToPath(path)));
    Run({"settings", "unset", "log-database"});
    Fails(65, {"log", "tail"}, "");
}

#ifndef _WIN32 // where nobody can move a file that is open
TEST_F(LogCommands, TailShowsTheLastRowsAndThenNewOnes) {
    Run({"log", "create"});
    for (const char16_t* message : {u"before", u"消息"})
        Append(message);
    pauses_left = 3;
    on_pause = [this] {
        if (pauses_left == 3)
            Append(u"new\x1b[31m\u202e"s + u'\0' + u"end");
        if (pauses_left == 2) { // rotated: the next file begins at its own first row
            for (const char* part : {"", "-wal", "-shm"})
                fs::rename(ToPath(path + part), ToPath(path + ".old" + part));
            EXPECT_EQ(logs.Create(path, FileContent(TARNEX_PACKAGING "/log-schema.sql")), "");
            Append(u"after the rotation");
        }
    };
    EXPECT_EQ(Output({"log", "tail", "--lines", "1"}),
              "2       2024-05-06  08:00:40  Out  1Nex   SMS       消息\n"
              "3       2024-05-06  08:00:40  Out  1Nex   SMS       new\\x1B[31m\\u202E\\x00end\n"
              "1       2024-05-06  08:00:40  Out  1Nex   SMS       after the rotation\n");
    ahead_of_utc = 8h;
    const json row = Answer({"log", "tail", "--once"});
    EXPECT_EQ(row["message"], "after the rotation");
    EXPECT_EQ(row["at"], "2024-05-06T08:00:40+08:00");
    EXPECT_EQ(row["by_sms"], true);
    EXPECT_EQ(row["detail"], "7");
}
#endif

} // namespace
} // namespace tarnex
