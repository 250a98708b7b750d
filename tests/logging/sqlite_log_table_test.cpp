#include "adapters/sqlite/any_log_table.h"
#include "adapters/sqlite/sqlite_handles.h"
#include "tests/temp_folder.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#ifndef _WIN32
#include "tests/in_child.h"
#endif

namespace tarnex {
namespace {

// The other program that works with the same file.
class OtherProgram {
  public:
    explicit OtherProgram(const std::string& path) {
        sqlite3* database = nullptr;
        sqlite3_open(path.c_str(), &database);
        database_.reset(database);
    }
    // The values of all rows, "|" between them, NULL as "-".
    std::string Run(const std::string& sql) {
        const auto collect = [](void* result, int columns, char** values, char**) {
            auto& out = *static_cast<std::string*>(result);
            for (int i = 0; i < columns; ++i)
                out += (out.empty() ? "" : "|") + std::string(values[i] ? values[i] : "-");
            return 0;
        };
        std::string result;
        EXPECT_EQ(sqlite3_exec(database_.get(), sql.c_str(), collect, &result, nullptr), SQLITE_OK)
            << sqlite3_errmsg(database_.get());
        return result;
    }

  private:
    Database database_;
};

bool Has(const std::string& message, const std::string& part) {
    const bool has = message.find(part) != std::string::npos;
    EXPECT_TRUE(has) << "\"" << message << "\" lacks \"" << part << "\"";
    return has;
}

struct SqliteLogTableTest : testing::Test {
    TempFolder folder;
    const std::string path = folder / "日志.db";
    AnyLogTable table;

    static LogRow Row(const Text& message) {
        LogRow row;
        for (std::size_t i = 1; i < row.size(); ++i)
            row[i] = ToText(static_cast<long long>(i));
        row[5] = message;
        return row;
    }
    void MakeDatabase(const std::string& then = "") const {
        OtherProgram other(path);
        other.Run(FileContent(TARNEX_PACKAGING "/log-schema.sql") + then);
        chmod(path.c_str(), 0666);
    }
    std::string Open() { return table.Open(FromUtf8(path)); }
    std::string Messages() const {
        return OtherProgram(path).Run("SELECT Message FROM Log ORDER BY Number");
    }
};

TEST_F(SqliteLogTableTest, ARowIsThereForOthersAtOnce) {
    MakeDatabase("INSERT INTO Log (Message) VALUES ('old');");
    OtherProgram reader(path);
    reader.Run("BEGIN; SELECT * FROM Log"); // a reader in the middle of its work
    ASSERT_EQ(Open(), "");
    LogRow row = Row(u"设备3");
    row[9] = row[10] = LogValue();
    row[11] = Text();
    row[12] = -1;
    EXPECT_EQ(table.Append(row), "");
    EXPECT_EQ(table.Append(Row(Text(u"a\"';\0b", 6))), "");
    const char16_t lone_surrogate[] = {u'x', 0xD83D, u'y', 0};
    EXPECT_EQ(table.Append(Row(lone_surrogate)), "");
    EXPECT_EQ(reader.Run("COMMIT; SELECT * FROM Log WHERE Number = 2"),
              "2|1|2|3|4|设备3|6|7|8|-|-||-1");
    EXPECT_EQ(reader.Run("SELECT typeof(Detail) FROM Log"), "null|integer|text|text");
    EXPECT_EQ(reader.Run("SELECT length(CAST(Message AS BLOB)) FROM Log WHERE Number > 2"), "6|5");
    EXPECT_EQ(reader.Run("PRAGMA journal_mode"), "wal");
}

TEST_F(SqliteLogTableTest, ColumnsAreFoundByPositionUnderAnyName) {
    OtherProgram other(path);
    other.Run(
        "CREATE TABLE lOG (\"a\"\"b\" INTEGER PRIMARY KEY, \"select\", 名, c3, c4, c5, c6, c7,"
        " c8, c9, c10, c11, c12, spare DEFAULT 'kept')");
    ASSERT_EQ(Open(), "");
    EXPECT_EQ(table.Append(Row(u"m")), "");
    EXPECT_EQ(other.Run("SELECT * FROM Log"), "1|1|2|3|4|m|6|7|8|9|10|11|12|kept");
    EXPECT_EQ(other.Run("PRAGMA journal_mode"), "delete");
}

TEST_F(SqliteLogTableTest, WhatCannotBeUsedIsSaidInPlainWords) {
    Has(table.Append(Row(u"")), "No log database is open");
    Has(Open(), path + " is missing: make it with \"tarnexctl log create\"");
    EXPECT_FALSE(std::filesystem::exists(ToPath(path)));

    WriteFile(path, "");
    Has(Open(), "no table \"Log\"");
    WriteFile(path, std::string(5000, '\xA5'));
    Has(Open(), "not an SQLite database");
    WriteFile(path, std::string(5000, '\0').replace(0, 19, "\0\1\0\0Standard ACE DB", 19));
    Has(Open(), "is an Access database");
    Has(table.Open(FromUtf8(folder.Path())), "is a folder");
    std::filesystem::remove(ToPath(path));
    OtherProgram(path).Run("CREATE TABLE Log (n, a, b, c)");
    Has(Open(), "with 4 columns instead of 13");
    Has(table.Append(Row(u"")), "No log database is open");
}

#ifndef _WIN32 // whose rights are another matter
TEST_F(SqliteLogTableTest, WithoutRightsTheMessageSaysWhichToGive) {
    MakeDatabase("PRAGMA journal_mode = DELETE;");
    struct Case {
        mode_t folder, file;
        const char* problem;
    };
    for (const Case& row : {Case{0755, 0444, "cannot be written: give the user"},
                            {0755, 0, "cannot be opened: give the user"},
                            {0, 0666, "cannot be opened: give the user"}}) {
        chmod(path.c_str(), row.file);
        chmod(folder.Path().c_str(), row.folder);
        EXPECT_TRUE(InChild(true, [&] { return Has(Open(), row.problem); }));
        chmod(folder.Path().c_str(), 0755);
    }
    chmod(folder.Path().c_str(), 0555);
    EXPECT_TRUE(InChild(
        true, [&] { return Open() == "" && Has(table.Append(Row(u"")), "file and its folder"); }));
}
#endif

TEST_F(SqliteLogTableTest, ALockedDatabaseLosesTheRowAndNoMore) {
    MakeDatabase("PRAGMA journal_mode = DELETE;");
    OtherProgram other(path);
    other.Run("BEGIN EXCLUSIVE");
    Has(Open(), "locked by another program");
    other.Run("COMMIT");
    ASSERT_EQ(Open(), "");
    other.Run("BEGIN EXCLUSIVE");
    Has(table.Append(Row(u"lost")), "locked by another program");
    EXPECT_EQ(Open(), ""); // the one that is open stays
    Has(table.Append(Row(u"lost")), "locked by another program");
    other.Run("COMMIT");
    EXPECT_EQ(table.Append(Row(u"a")), "");
    EXPECT_EQ(table.Append(Row(u"b")), "");
    EXPECT_EQ(Messages(), "a|b");
}

TEST_F(SqliteLogTableTest, OpeningAgainFollowsTheFile) {
    MakeDatabase();
    ASSERT_EQ(Open(), "");
    EXPECT_EQ(table.Append(Row(u"a")), "");
#ifndef _WIN32 // where nobody can move a file that is open
    for (const char* part : {"", "-wal", "-shm"})
        std::filesystem::rename(ToPath(path + part), ToPath(folder / "old.db" + part));
    EXPECT_EQ(Open(), "");
    Has(table.Append(Row(u"c")), "was moved or deleted");
    MakeDatabase();
    EXPECT_EQ(Open(), "");
    EXPECT_EQ(table.Append(Row(u"d")), "");
    EXPECT_EQ(Messages(), "d");
#endif

    OtherProgram(path).Run("DROP TABLE Log");
    Has(table.Append(Row(u"e")), "no such table");
    Has(Open(), "no table \"Log\"");
}

TEST_F(SqliteLogTableTest, AFullDiskIsToldAndOverOnceThereIsSpace) {
    MakeDatabase();
    OtherProgram other(path);
    // A table out of row numbers reports the same as a disk out of blocks.
    other.Run("INSERT INTO Log (Number) VALUES (9223372036854775807)");
    ASSERT_EQ(Open(), "");
    Has(table.Append(Row(u"lost")), "free space on its disk");
    other.Run("DELETE FROM Log; DELETE FROM sqlite_sequence");
    EXPECT_EQ(table.Append(Row(u"a")), "");
}

} // namespace
} // namespace tarnex
