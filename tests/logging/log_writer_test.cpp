#include "logging/log_writer.h"
#include "simulator/simulated_clock.h"
#include "simulator/simulated_stores.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

struct LogWriterTest : testing::Test {
    SimulatedClock clock{{.year = 2024, .month = 5, .day = 6, .hour = 7, .minute = 8, .second = 9}};
    SimulatedLogTable table;
    std::vector<std::string> told;
    OperatorNotices notices{[this](const std::string& line) { told.push_back(line); }};
    LogWriter log{clock, table, notices};

    void SetUp() override { log.Open(u"/log.db"); }
};

const LogValue kUnwritten;

TEST_F(LogWriterTest, ANotificationFillsEveryColumn) {
    const EventRecord event{.MachineNo = 3,
                            .ServiceNo = 30,
                            .StatusNo = u"1",
                            .AutoNo = 4,
                            .SMSableNo = u"1",
                            .EmailableNo = u"0",
                            .MachineName = u"web1",
                            .Memo = u"机房"};
    EXPECT_TRUE(log.WriteLog(u"设备3", event));
    const LogRow row{kUnwritten, u"2024-05-06", u"07:08:09", u"Out",          u"3Nex",
                     u"设备3",   u"web服务",    u"异常",     u"系统尝试恢复", u"Yes",
                     u"No",      u"web1",       u"机房"};
    EXPECT_EQ(table.Rows.at(0), row);
}

TEST_F(LogWriterTest, ACommandSetsTheTargetOfTheResponsesBehindIt) {
    EXPECT_TRUE(log.WriteResponseLog(u"first"));
    EXPECT_TRUE(log.WriteCtrlLog(u"3301"));
    EXPECT_TRUE(log.WriteResponseLog(u"done"));
    EXPECT_EQ(table.Rows.at(0)[12], LogValue(0));
    const LogRow command{kUnwritten, u"2024-05-06", u"07:08:09",  u"In",      u"3Nex",    u"3301",
                         u"web服务", u"",           u"重启/开启", kUnwritten, kUnwritten, u"",
                         2};
    EXPECT_EQ(table.Rows.at(1), command);
    const LogRow response{kUnwritten, u"2024-05-06", u"07:08:09", u"Out",     u"Nex1", u"done", u"",
                          u"",        u"",           kUnwritten,  kUnwritten, u"",     2};
    EXPECT_EQ(table.Rows.at(2), response);
}

TEST_F(LogWriterTest, CommandsWithoutNamesAreRowsAllTheSame) {
    EXPECT_TRUE(log.WriteCtrlLog(u"1053"));
    EXPECT_TRUE(log.WriteCtrlLog(u"ECmd"));
    EXPECT_TRUE(log.WriteCtrlLog(u""));
    EXPECT_EQ(table.Rows.at(0)[6], LogValue(u""));
    EXPECT_EQ(table.Rows.at(0)[8], LogValue(u""));
    EXPECT_EQ(table.Rows.at(0)[12], LogValue(0));
    EXPECT_EQ(table.Rows.at(1)[4], LogValue(u"ENex"));
    EXPECT_EQ(table.Rows.at(1)[12], LogValue(-1));
    EXPECT_EQ(table.Rows.at(2)[4], LogValue(u"Nex"));
}

TEST_F(LogWriterTest, AnIndexOutOfRangeLosesTheRow) {
    EventRecord event;
    event.ServiceNo = 90;
    event.AutoNo = 9;
    EXPECT_TRUE(log.WriteLog(u"", event));
    event.ServiceNo = 91;
    EXPECT_FALSE(log.WriteLog(u"", event));
    event.ServiceNo = 90;
    event.AutoNo = 10;
    EXPECT_FALSE(log.WriteLog(u"", event));
    event.AutoNo = 0;
    event.StatusNo = u"-1";
    EXPECT_FALSE(log.WriteLog(u"", event));
    EXPECT_FALSE(log.WriteCtrlLog(u"4912"));
    EXPECT_EQ(log.LostRows(), 4u);
    EXPECT_TRUE(log.WriteResponseLog(u""));
    EXPECT_EQ(table.Rows.back()[12], LogValue(3)); // of the command whose row was lost
    EXPECT_TRUE(told.empty());
}

TEST_F(LogWriterTest, AFailingDatabaseIsToldOnceAndItsRecoveryTooWithTheLosses) {
    table.Problem = "locked";
    EXPECT_FALSE(log.WriteResponseLog(u"a"));
    EXPECT_FALSE(log.WriteResponseLog(u"b"));
    EXPECT_EQ(told, (std::vector<std::string>{"locked"}));
    table.Problem = "";
    log.Open(u"/log.db"); // proves nothing about rows
    EXPECT_EQ(told.size(), 1u);
    EXPECT_TRUE(log.WriteResponseLog(u"c"));
    ASSERT_EQ(told.size(), 2u);
    EXPECT_NE(told[1].find(" 2."), std::string::npos) << told[1];
    EXPECT_EQ(table.Rows.size(), 1u);
}

TEST_F(LogWriterTest, ADatabaseThatCannotBeOpenedIsToldInsteadOfItsRows) {
    table.Problem = "not a database";
    log.Open(u"/log.db");
    table.Problem = "no log database is open";
    EXPECT_FALSE(log.WriteResponseLog(u"a"));
    EXPECT_EQ(told, (std::vector<std::string>{"not a database"}));
    table.Problem = "";
    log.Open(u"");
    EXPECT_TRUE(log.WriteResponseLog(u"b")); // the one in use before
    EXPECT_TRUE(notices.Troubles().empty());
}

TEST_F(LogWriterTest, WithoutAPathThereIsNoLogAndOneNotice) {
    LogWriter unconfigured(clock, table, notices);
    table.Problem = "missing";
    unconfigured.Open(u"/wrong");
    unconfigured.Open(u"");
    table.Problem = "";
    EXPECT_TRUE(notices.Troubles().empty());
    told.clear();
    EXPECT_FALSE(unconfigured.WriteResponseLog(u"a"));
    EXPECT_FALSE(unconfigured.WriteResponseLog(u"b"));
    EXPECT_EQ(unconfigured.LostRows(), 2u);
    EXPECT_EQ(told.size(), 1u);
    unconfigured.Open(u"/log.db");
    unconfigured.Open(u"");
    EXPECT_TRUE(unconfigured.WriteResponseLog(u"c"));
    EXPECT_EQ(told.size(), 2u);
}

TEST(OperatorNotices, TopicsDoNotHideEachOther) {
    std::vector<std::string> told;
    OperatorNotices notices([&](const std::string& line) { told.push_back(line); });
    notices.Report("log", "", "log fine");
    notices.Report("log", "A", "");
    notices.Report("mail", "A", "");
    notices.Report("log", "A", "");
    notices.Report("log", "B", "");
    notices.Report("log", "", "log fine");
    notices.Report("log", "", "log fine");
    notices.Report("log", "B", "");
    EXPECT_EQ(told, (std::vector<std::string>{"A", "A", "B", "log fine", "B"}));
}

} // namespace
} // namespace tarnex
