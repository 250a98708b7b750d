#include "tests/world.h"

namespace tarnex {
namespace {

struct LogWriterTest : WorldTest {
    LogWriterTest() { log.Open(u"/log.db"); }
};

TEST_F(LogWriterTest, EveryKindOfRowHasItsColumns) {
    EXPECT_TRUE(log.WriteLog(u"设备3", ParsedRecord(u"3301410web1{[b^k^]}机房")));
    EXPECT_TRUE(log.WriteResponseLog(u"first"));
    for (const TextView command : {u"3301", u"1053", u"ECmd", u""})
        EXPECT_TRUE(log.WriteCtrlLog(Text(command)));
    EXPECT_TRUE(log.WriteCtrlLog(u"3301"));
    EXPECT_TRUE(log.WriteResponseLog(u"done")); // to the machine of the command before it
    const Text now = u"2024-05-06|08:00:00|";
    EXPECT_EQ(Rows(), (std::vector<Text>{
                          now + u"Out|3Nex|设备3|web服务|异常|系统尝试恢复|Yes|No|web1|机房",
                          now + u"Out|Nex1|first||||-|-||0",
                          now + u"In|3Nex|3301|web服务||重启/开启|-|-||2",
                          now + u"In|1Nex|1053||||-|-||0", // without names a row all the same
                          now + u"In|ENex|ECmd||||-|-||-1",
                          now + u"In|Nex|||||-|-||-1",
                          now + u"In|3Nex|3301|web服务||重启/开启|-|-||2",
                          now + u"Out|Nex1|done||||-|-||2",
                      }));
    EXPECT_TRUE(std::holds_alternative<int>(table.Rows.back()[12]));
}

TEST_F(LogWriterTest, AnIndexOutOfRangeLosesTheRow) {
    EventRecord last = ParsedRecord(u"0909900");
    EXPECT_TRUE(log.WriteLog(u"", last));
    EXPECT_FALSE(log.WriteLog(u"", ParsedRecord(u"0910900")));
    last.AutoNo = 10;
    EXPECT_FALSE(log.WriteLog(u"", last));
    last.AutoNo = 0;
    last.StatusNo = u"-1";
    EXPECT_FALSE(log.WriteLog(u"", last));
    EXPECT_FALSE(log.WriteCtrlLog(u"4912"));
    EXPECT_EQ(log.LostRows(), 4u);
    EXPECT_TRUE(log.WriteResponseLog(u""));
    EXPECT_EQ(table.Rows.back()[12], LogValue(3)); // of the command whose row was lost
    EXPECT_TRUE(said.empty());
}

TEST_F(LogWriterTest, AFailingDatabaseIsToldOnceAndItsRecoveryTooWithTheLosses) {
    table.Problem = "locked";
    EXPECT_FALSE(log.WriteResponseLog(u"a"));
    EXPECT_FALSE(log.WriteResponseLog(u"b"));
    table.Problem = "";
    log.Open(u"/log.db"); // proves nothing about rows
    EXPECT_EQ(said, (std::vector<std::string>{"locked"}));
    EXPECT_TRUE(log.WriteResponseLog(u"c"));
    ASSERT_EQ(said.size(), 2u);
    EXPECT_TRUE(said[1].ends_with("lost since the start: 2.")) << said[1];

    table.Problem = "not a database";
    log.Open(u"/log.db");
    table.Problem = "no log database is open";
    EXPECT_FALSE(log.WriteResponseLog(u"a"));
    EXPECT_EQ(said.back(), "not a database"); // that is why its rows fail
    table.Problem = "";
    log.Open(u"");
    EXPECT_TRUE(log.WriteResponseLog(u"b")); // the one in use before
    EXPECT_TRUE(notices.Troubles().empty());
}

TEST_F(LogWriterTest, WithoutAPathThereIsNoLogAndOneNotice) {
    LogWriter unconfigured(clock, table, notices);
    table.Problem = "missing";
    unconfigured.Open(u"/wrong");
    EXPECT_FALSE(unconfigured.WriteResponseLog(u"a"));
    unconfigured.Open(u"");
    table.Problem = "";
    EXPECT_TRUE(notices.Troubles().empty());
    said.clear();
    EXPECT_FALSE(unconfigured.WriteResponseLog(u"a"));
    EXPECT_FALSE(unconfigured.WriteResponseLog(u"b"));
    EXPECT_EQ(unconfigured.LostRows(), 3u);
    EXPECT_EQ(said.size(), 1u);
    unconfigured.Open(u"/log.db");
    unconfigured.Open(u"");
    EXPECT_TRUE(unconfigured.WriteResponseLog(u"c"));
    EXPECT_EQ(said.size(), 2u);
}

TEST_F(LogWriterTest, TopicsDoNotHideEachOther) {
    for (const auto& [topic, trouble] : {std::pair{"log", ""},
                                         {"log", "A"},
                                         {"mail", "A"},
                                         {"log", "A"},
                                         {"log", "B"},
                                         {"log", ""},
                                         {"log", ""},
                                         {"log", "B"}})
        notices.Report(topic, trouble, "fine");
    EXPECT_EQ(said, (std::vector<std::string>{"A", "A", "B", "fine", "B"}));
}

} // namespace
} // namespace tarnex
