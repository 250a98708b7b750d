#include "notify/quiet_time.h"
#include "notify/sms_pieces.h"
#include "tests/notify/notify_rig.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

// A text whose characters differ by position.
Text Numbered(std::size_t length) {
    Text text;
    for (std::size_t i = 0; i < length; ++i)
        text += char16_t(0x4E00 + i);
    return text;
}

TEST(SMSPieces, CutOnlyWhatDoesNotFit) {
    struct Row {
        std::size_t length;
        std::vector<std::size_t> parts; // characters behind the prefix
    };
    const Row rows[] = {{0, {0}},        {65, {65}},      {66, {66}},
                        {69, {69}},      {70, {65, 5}},   {71, {65, 6}},
                        {135, {65, 70}}, {139, {65, 74}}, {140, {65, 65, 10}}};
    for (const Row& row : rows) {
        const Text text = Numbered(row.length);
        const auto pieces = CutIntoPieces(text);
        ASSERT_EQ(pieces.size(), row.parts.size()) << row.length;
        std::size_t start = 0;
        for (std::size_t k = 0; k < pieces.size(); ++k) {
            const Text prefix =
                u"{" + ToText((long long)k + 1) + u"/" + ToText((long long)pieces.size()) + u"}";
            EXPECT_EQ(pieces[k],
                      (pieces.size() > 1 ? prefix : Text()) + text.substr(start, row.parts[k]))
                << row.length;
            start += row.parts[k];
        }
    }
}

TEST(QuietTime, OnlyTimesAreFormatted) {
    EXPECT_EQ(FormattedHourMinute(u"7:05"), u"07:05");
    EXPECT_EQ(FormattedHourMinute(u"7:05:10"), u"07:05");
    EXPECT_EQ(FormattedHourMinute(u"23:59:59"), u"23:59");
    for (const TextView text : {u"", u"7", u"24:00", u"7:60", u"7:05:60", u"7:05:10:1", u"-1:05",
                                u"7:", u":05", u"007:05", u"a7:05"})
        EXPECT_EQ(FormattedHourMinute(text), text);
}

TEST(QuietTime, HoldsFromItsStartToItsEnd) {
    Settings settings;
    settings.QuietTimeOn = true;
    settings.QuietDay[1] = true;
    settings.QuietTimes[2] = u"7:30";
    settings.QuietTimes[3] = u"12:00";
    const auto quiet = [&settings](int weekday, int hour, int minute) {
        return InQuietTime(settings, {.hour = hour, .minute = minute, .weekday = weekday});
    };
    EXPECT_FALSE(quiet(1, 7, 29));
    EXPECT_TRUE(quiet(1, 7, 30));
    EXPECT_TRUE(quiet(1, 12, 0));
    EXPECT_FALSE(quiet(1, 12, 1));
    EXPECT_FALSE(quiet(0, 8, 0));
    settings.QuietTimes[2] = u"22:00"; // over midnight
    EXPECT_FALSE(quiet(1, 23, 0));
    EXPECT_FALSE(quiet(1, 5, 0));
    settings.QuietTimes[2] = u"";
    EXPECT_TRUE(quiet(1, 0, 0));
    settings.QuietTimeOn = false;
    EXPECT_FALSE(quiet(1, 0, 0));
}

TEST(NotifyChannels, NeedTheSwitchAndTheMode) {
    struct Row {
        bool sms, email;
        TextView mode, channels;
    };
    const Row rows[] = {{true, true, u"SMS", u"10"},  {true, true, u"Email", u"01"},
                        {true, true, u"S+E", u"11"},  {false, true, u"S+E", u"01"},
                        {true, false, u"S+E", u"10"}, {true, true, u"s+e", u"00"},
                        {false, false, u"SMS", u"00"}};
    for (const Row& row : rows) {
        Settings settings;
        settings.SMSNotifyOn = row.sms;
        settings.EmailNotifyOn = row.email;
        settings.NotifyMode = row.mode;
        EXPECT_EQ(NotifyChannels(settings), row.channels) << ToUtf8(row.mode);
    }
}

struct DispatcherTest : NotifyRig, testing::Test {
    DispatcherTest() {
        settings.SendCount = 1;
        settings.SwitchCheck42 = settings.SwitchCheck43 = true;
    }
    using Entries = std::vector<Text>;
};

constexpr TextView kShort = u"设备1的web服务正常。";

TEST_F(DispatcherTest, AnEventGoesToEveryPlaceThatWantsIt) {
    window.lists.DebugOn = true;
    dispatcher.DispatchEvent(u"1302011srv{[b^k^]}Mon");
    const Text text = u"设备1\"Mon\"的web服务正常(srv)。";
    EXPECT_EQ(QueuedSMS(), (Entries{u"1" + text, u"2" + text}));
    EXPECT_EQ(mail.texts, (Entries{u"2024-05-06 " + text}));
    ASSERT_EQ(table.Rows.size(), 1u);
    const Entries lines{u"",
                        u"解码:1302011srv{[b^k^]}Mon",
                        u"MachineNo:1",
                        u"ServiceNo:30web服务",
                        u"StatusNo:2正常",
                        u"AutoNo:0",
                        u"SMSableNo:1",
                        u"EmailableNo:1",
                        u"MachineName:srv",
                        u"Memo:Mon",
                        u"Email:" + text,
                        u"Log:" + text,
                        u"SMS1:" + text,
                        u"SMS2:" + text};
    EXPECT_EQ(window.mList1.Lines(), lines);
}

TEST_F(DispatcherTest, FlagsSwitchesAndSendCountDecide) {
    struct Row {
        const char* name;
        std::function<void(Settings&)> set;
        TextView record;
        Entries sms;
        std::size_t mails;
    };
    const Text first = u"1" + Text(kShort), second = u"2" + Text(kShort);
    const Row rows[] = {
        {"no flags", [](Settings&) {}, u"1302000{[b^k^]}", {}, 0},
        {"SMS only", [](Settings&) {}, u"1302010{[b^k^]}", {first, second}, 0},
        {"mail only", [](Settings&) {}, u"1302001{[b^k^]}", {}, 1},
        {"first", [](Settings& s) { s.SwitchCheck43 = false; }, u"1302011", {first}, 1},
        {"second", [](Settings& s) { s.SwitchCheck42 = false; }, u"1302011", {second}, 1},
        {"twice",
         [](Settings& s) { s.SendCount = 2; },
         u"1302011",
         {first, second, first, second},
         1},
        {"never", [](Settings& s) { s.SendCount = 0; }, u"1302011", {}, 1},
        {"negative", [](Settings& s) { s.SendCount = -1; }, u"1302011", {}, 1},
        {"no unit", [](Settings& s) { s.AutoSearchOff = true; }, u"1302011", {}, 1},
        {"quiet",
         [](Settings& s) {
             s.QuietTimeOn = s.QuietDay[1] = true;
             s.QuietTimes[2] = s.QuietTimes[3] = u"8:00";
         },
         u"1302011",
         {},
         1},
    };
    const Settings before = settings;
    for (const Row& row : rows) {
        settings = before;
        row.set(settings);
        mail.texts.clear();
        table.Rows.clear();
        dispatcher.DispatchEvent(row.record);
        EXPECT_EQ(QueuedSMS(), row.sms) << row.name;
        EXPECT_EQ(mail.texts.size(), row.mails) << row.name;
        EXPECT_EQ(table.Rows.size(), 1u) << row.name; // logged in any case
    }
}

TEST_F(DispatcherTest, ARepetitionQueuesTheWholeSetAgain) {
    settings.SendCount = 2;
    const Text memo = Numbered(60);
    dispatcher.DispatchEvent(u"1302010{[b^k^]}" + memo);
    const Text text = u"设备1\"" + memo + u"\"的web服务正常。";
    const Text one = u"{1/2}" + text.substr(0, 65), two = u"{2/2}" + text.substr(65);
    EXPECT_EQ(QueuedSMS(), (Entries{u"1" + one, u"2" + one, u"1" + two, u"2" + two, //
                                    u"1" + one, u"2" + one, u"1" + two, u"2" + two}));
}

TEST_F(DispatcherTest, EndlessRepetitionsLeaveWhatTheQueueCanHold) {
    settings.SendCount = 32767;
    dispatcher.DispatchEvent(u"1302010{[b^k^]}" + Numbered(60)); // four entries a repetition
    EXPECT_EQ(queue.Totals().PushedOut, 0u);
    const Entries entries = QueuedSMS();
    ASSERT_EQ(entries.size(), kSMSFifoSize);
    EXPECT_EQ(entries.front().substr(0, 6), u"1{1/2}");
    EXPECT_EQ(entries.back().substr(0, 6), u"2{2/2}");
    dispatcher.DispatchEvent(u"1302010{[b^k^]}" + Text(65000, u'x'));
    EXPECT_EQ(QueuedSMS().size(), kSMSFifoSize);
}

TEST_F(DispatcherTest, SendsWithoutALogDatabase) {
    table.Problem = "disk full";
    dispatcher.DispatchEvent(u"1302011");
    EXPECT_EQ(QueuedSMS().size(), 2u);
    EXPECT_EQ(mail.texts.size(), 1u);
}

TEST_F(DispatcherTest, CommandsAreJudgedByTheNumbersInTheFileNow) {
    store.SetContent("[Text]\nText1(34)=13800000001\nText1(35)=13900000002\n");
    EXPECT_EQ(codec.DecodeSMSCommand(u"13900000002", u"1301"),
              u"13012系统在06日08:00收到命令：1301--1号设备web服务重启/开启");
    store.SetContent("[Text]\nText1(34)=13900000002\nText1(35)=13900000003\n");
    EXPECT_EQ(codec.DecodeSMSCommand(u"13900000002", u"1301").substr(0, 5), u"13011");
    EXPECT_EQ(codec.DecodeSMSCommand(u"13800000001", u"1301"), u"ETel");
}

} // namespace
} // namespace tarnex
