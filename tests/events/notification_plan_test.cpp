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
        {u"2022011{[b^k^]}",           u"设备2的内存状态正常。"},
        {u"3501011{[b^k^]}",           u"设备3的储存空间异常。"},
        {u"3501111{[b^k^]}",           u"设备3的储存空间异常，服务开始重启。"},
        {u"3501311{[b^k^]}",           u"设备3的储存空间异常。回复：3501重启服务，3502关闭服务，3901重启设备，3902关闭设备。"},
        {u"1803010{[b^k^]}WebMon",     u"设备1\"WebMon\"的通讯丢失。"},
        {u"1901111{[b^k^]}",           u"设备1的整机异常。"},
        {u"1201011{[b^k^]}",           u"设备1的文件监控异常。"},
        {u"1201411{[b^k^]}",           u"设备1的文件监控异常，系统尝试恢复。"},
        {u"1201111{[b^k^]}",           u"设备1的文件监控异常"},
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

constexpr CalendarTime kMondayAtEight{.year = 2024, .month = 5, .day = 6, .hour = 8, .weekday = 1};

Settings Everything() {
    Settings settings;
    settings.SendCount = 1;
    settings.SwitchCheck42 = settings.SwitchCheck43 = true;
    settings.QuietDay[1] = true;
    settings.QuietTimes[2] = u"7:30";
    settings.QuietTimes[3] = u"08:00:59";
    return settings;
}

// "1", "2": the numbers, each with what holds it back; "x": repetitions; "M": by mail; "Q": counted
// as held by quiet time.
std::string Summary(const NotificationPlan& plan) {
    std::string summary;
    for (const auto& number : plan.numbers) {
        summary += char(number.recipient);
        for (const HeldBack reason : number.held_back)
            summary += "fqucn"[int(reason)]; // flag, quiet, unit, count, number
    }
    return summary + "x" + std::to_string(plan.repetitions) + (plan.mail ? "M" : "") +
           (plan.HeldByQuietTime() ? "Q" : "");
}

TEST(NotificationPlan, FlagsAndSettingsHoldBack) {
    struct Row {
        TextView record;
        void (*set)(Settings&);
        const char* plan;
    };
    const auto none = [](Settings&) {};
    // clang-format off
    const Row rows[] = {
        {u"1302011", none,                                          "12x1M"},
        {u"1302010", none,                                          "12x1"},
        {u"1302001", none,                                          "1f2fx0M"},
        {u"1302022", none,                                          "1f2fx0"},
        {u"1302011", [](Settings& s) { s.SwitchCheck42 = false; },  "1n2x1M"},
        {u"1302011", [](Settings& s) { s.SwitchCheck43 = false; },  "12nx1M"},
        {u"1302011", [](Settings& s) { s.SendCount = 3; },          "12x3M"},
        {u"1302011", [](Settings& s) { s.SendCount = 32767; },      "12x100M"},
        {u"1302011", [](Settings& s) { s.SendCount = 0; },          "1c2cx0M"},
        {u"1302011", [](Settings& s) { s.SendCount = -1; },         "1c2cx0M"},
        {u"1302011", [](Settings& s) { s.AutoSearchOff = true; },   "1u2ux0M"},
        {u"1302011", [](Settings& s) { s.QuietTimeOn = true; },     "1q2qx0MQ"},
        {u"1302001", [](Settings& s) { s.QuietTimeOn = true; },     "1fq2fqx0M"},
    };
    // clang-format on
    for (const Row& row : rows) {
        Settings settings = Everything();
        row.set(settings);
        const NotificationPlan plan = Plan(ParsedRecord(row.record), settings, kMondayAtEight);
        EXPECT_EQ(Summary(plan), row.plan) << &row - rows;
    }
    Settings first_only = Everything();
    first_only.SwitchCheck43 = false;
    first_only.SendCount = 3;
    EXPECT_EQ(Plan(ParsedRecord(u"1302011"), first_only, kMondayAtEight).SMSCount(), 3u);
}

TEST(NotificationPlan, CutsOnlyWhatDoesNotFit) {
    constexpr std::size_t kAroundMemo = 14; // characters
    struct Row {
        std::size_t length;
        TextView pieces; // prefix and characters behind it
        int most;        // repetitions of two SMS a piece until 200 are full
    };
    const Row rows[] = {{69, u" 69", 100},
                        {70, u" {1/2}65 {2/2}5", 50},
                        {139, u" {1/2}65 {2/2}74", 50},
                        {140, u" {1/3}65 {2/3}65 {3/3}10", 34}};
    for (const Row& row : rows) {
        Settings settings = Everything();
        settings.SendCount = 32767;
        Text memo; // whose characters differ by position
        while (memo.size() < row.length - kAroundMemo)
            memo += char16_t(0x4E00 + memo.size());
        const NotificationPlan plan =
            Plan(ParsedRecord(u"1302010{[b^k^]}" + memo), settings, kMondayAtEight);
        Text pieces, joined;
        for (const Text& piece : plan.pieces) {
            const std::size_t prefix = piece.find(u'}') + 1;
            pieces += u" " + piece.substr(0, prefix) + ToText((long long)(piece.size() - prefix));
            joined += piece.substr(prefix);
        }
        EXPECT_EQ(ToUtf8(pieces), ToUtf8(row.pieces));
        EXPECT_EQ(joined, u"设备1\"" + memo + u"\"的web服务正常。");
        EXPECT_EQ(plan.repetitions, row.most);
        EXPECT_EQ(plan.SMSCount(), std::size_t(row.most) * 2 * plan.pieces.size());
    }
}

TEST(NotificationPlan, QuietTimeHoldsFromItsStartToItsEnd) {
    using enum QuietTime::State;
    Settings settings = Everything();
    const auto quiet = [&settings](int weekday, int hour, int minute) {
        const CalendarTime at{.hour = hour, .minute = minute, .weekday = weekday};
        return Plan({}, settings, at).quiet.state;
    };
    EXPECT_EQ(quiet(1, 8, 0), kOff);
    settings.QuietTimeOn = true;
    EXPECT_EQ(quiet(1, 7, 29), kOutside);
    EXPECT_EQ(quiet(1, 7, 30), kQuiet);
    EXPECT_EQ(quiet(1, 8, 0), kQuiet);
    EXPECT_EQ(quiet(1, 8, 1), kOutside);
    EXPECT_EQ(quiet(0, 8, 0), kOtherDay);
    settings.QuietTimes[2] = u"22:00"; // over midnight
    EXPECT_EQ(quiet(1, 23, 0), kOutside);
    EXPECT_EQ(quiet(1, 5, 0), kOutside);
    settings.QuietTimes[2] = u"";
    EXPECT_EQ(quiet(1, 0, 0), kQuiet);
}

TEST(NotificationPlan, LinkEventsNeedTheSwitchAndTheMode) {
    struct Row {
        bool sms, mail;
        TextView mode, channels;
    };
    for (const Row& row : {Row{true, true, u"SMS", u"10"},
                           {true, true, u"Email", u"01"},
                           {false, true, u"S+E", u"01"},
                           {true, false, u"S+E", u"10"},
                           {true, true, u"s+e", u"00"}}) {
        Settings settings;
        settings.SMSNotifyOn = row.sms;
        settings.EmailNotifyOn = row.mail;
        settings.NotifyMode = row.mode;
        EXPECT_EQ(NotifyChannels(settings), row.channels);
    }
}

} // namespace
} // namespace tarnex
