#include "events/event_record.h"
#include "events/notification_plan.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(EventRecord, WhatIsMissingOrNoNumberIsZeroOrEmpty) {
    const EventRecord cut = ParsedRecord(u"13{[b^k^]}Web{[b^k^]}Mon");
    EXPECT_EQ(cut.MachineNo, 1);
    EXPECT_EQ(cut.ServiceNo, 3);
    EXPECT_EQ(cut.StatusNo + cut.SMSableNo + cut.EmailableNo, u"000");
    EXPECT_EQ(cut.MachineName, u"");
    EXPECT_EQ(cut.Memo, u"Web{[b^k^]}Mon");

    const EventRecord letters = ParsedRecord(u"x7ayz11name");
    EXPECT_EQ(letters.MachineNo, 0);
    EXPECT_EQ(letters.ServiceNo, 7); // the leading number of "7a"
    EXPECT_EQ(letters.StatusNo, u"0");
    EXPECT_EQ(letters.MachineName, u"name"); // no delimiter: all the rest
    EXPECT_EQ(letters.Memo, u"");
}

TEST(NotificationText, FollowsItsTable) {
    // clang-format off
    const std::pair<TextView, TextView> rows[] = {
        // the parts in front of the tail
        {u"1302011{[b^k^]}",           u"设备1的web服务正常。"},
        {u"1302011srv{[b^k^]}Mon",     u"设备1\"Mon\"的web服务正常(srv)。"},
        {u"1012011srv{[b^k^]}Mon",     u"设备1\"Mon\"上次发生Tarnex软件异常退出或异常关机行为。"},
        {u"4122011{[b^k^]}",           u"设备4的正常。"},
        {u"4992011{[b^k^]}",           u"设备4的正常。"},
        {u"4-52011{[b^k^]}",           u"设备4的正常。"},
        {u"1305011{[b^k^]}",           u"设备1的web服务。回复：1301重启服务，1302关闭服务，1901重启设备，1902关闭设备。"},
        // the tails
        {u"2021011{[b^k^]}",           u"设备2的内存状态异常。回复：2901重启设备，2902关闭设备。"},
        {u"2031111{[b^k^]}",           u"设备2的CPU负荷异常。回复：2901重启设备，2902关闭设备。"},
        {u"2101411{[b^k^]}",           u"设备2的Ping IP1响应异常。回复：2901重启设备，2902关闭设备。"},
        {u"2111311{[b^k^]}",           u"设备2的Ping IP2响应异常设备开始重启。"},
        {u"2021311{[b^k^]}",           u"设备2的内存状态异常设备开始重启。"},
        {u"2022011{[b^k^]}",           u"设备2的内存状态正常。"},
        {u"2032311{[b^k^]}",           u"设备2的CPU负荷正常。"},
        {u"3501011{[b^k^]}",           u"设备3的储存空间异常。"},
        {u"3501111{[b^k^]}",           u"设备3的储存空间异常，服务开始重启。"},
        {u"3501311{[b^k^]}",           u"设备3的储存空间异常。回复：3501重启服务，3502关闭服务，3901重启设备，3902关闭设备。"},
        {u"1803010{[b^k^]}WebMon",     u"设备1\"WebMon\"的通讯丢失。"},
        {u"1901111{[b^k^]}",           u"设备1的整机异常。"},
        {u"1201011{[b^k^]}",           u"设备1的文件监控异常。"},
        {u"1201411{[b^k^]}",           u"设备1的文件监控异常，系统尝试恢复。"},
        {u"1201111{[b^k^]}",           u"设备1的文件监控异常"},
        {u"1201311{[b^k^]}",           u"设备1的文件监控异常"},
        {u"1203011{[b^k^]}",           u"设备1的文件监控丢失设备开始重启。"},
        {u"1313011{[b^k^]}",           u"设备1的ftp服务丢失设备开始重启。"},
        {u"1322111{[b^k^]}",           u"设备1的pop服务正常。"},
        {u"1331111{[b^k^]}",           u"设备1的smtp服务异常，服务开始重启。"},
        {u"1331011{[b^k^]}",           u"设备1的smtp服务异常。回复：1331重启服务，1332关闭服务，1901重启设备，1902关闭设备。"},
        {u"1011011{[b^k^]}",           u"设备1上次发生Tarnex软件异常退出或异常关机行为。回复：1011重启服务，1012关闭服务，1901重启设备，1902关闭设备。"},
        {u"1020011{[b^k^]}",           u"设备1的内存状态。回复：1021重启服务，1022关闭服务，1901重启设备，1902关闭设备。"},
    };
    // clang-format on
    for (const auto& [record, text] : rows)
        EXPECT_EQ(ToUtf8(NotificationText(ParsedRecord(record))), ToUtf8(text)) << ToUtf8(record);
}

} // namespace
} // namespace tarnex
