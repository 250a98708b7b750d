#include "events/quiet_time.h"
#include "events/sms_pieces.h"
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
        TextView pieces; // prefix and characters behind it
    };
    const Row rows[] = {{0, u" 0"},
                        {65, u" 65"},
                        {66, u" 66"},
                        {69, u" 69"},
                        {70, u" {1/2}65 {2/2}5"},
                        {71, u" {1/2}65 {2/2}6"},
                        {135, u" {1/2}65 {2/2}70"},
                        {139, u" {1/2}65 {2/2}74"},
                        {140, u" {1/3}65 {2/3}65 {3/3}10"}};
    for (const Row& row : rows) {
        Text pieces, joined;
        for (const Text& piece : CutIntoPieces(Numbered(row.length))) {
            const std::size_t prefix = piece.find(u'}') + 1;
            pieces += u" " + piece.substr(0, prefix) + ToText((long long)(piece.size() - prefix));
            joined += piece.substr(prefix);
        }
        EXPECT_EQ(ToUtf8(pieces), ToUtf8(row.pieces));
        EXPECT_EQ(joined, Numbered(row.length));
    }
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
    const auto channels = [](bool sms, bool email, TextView mode) {
        Settings settings;
        settings.SMSNotifyOn = sms;
        settings.EmailNotifyOn = email;
        settings.NotifyMode = mode;
        return NotifyChannels(settings);
    };
    EXPECT_EQ(channels(true, true, u"SMS"), u"10");
    EXPECT_EQ(channels(true, true, u"Email"), u"01");
    EXPECT_EQ(channels(true, true, u"S+E"), u"11");
    EXPECT_EQ(channels(false, true, u"S+E"), u"01");
    EXPECT_EQ(channels(true, false, u"S+E"), u"10");
    EXPECT_EQ(channels(true, true, u"s+e"), u"00");
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
    dispatcher.DispatchEvent(u"1302011srv{[b^k^]}Mon\r.\nQUIT");
    const Text text = u"设备1\"Mon\r.\nQUIT\"的web服务正常(srv)。";
    EXPECT_EQ(QueuedSMS(), (Entries{u"1" + text, u"2" + text}));
    EXPECT_EQ(mail.texts, (Entries{u"2024-05-06 设备1\"Mon . QUIT\"的web服务正常(srv)。"}));
    ASSERT_EQ(table.Rows.size(), 1u);
    const Entries lines{u"",
                        u"解码:1302011srv{[b^k^]}Mon\r.\nQUIT",
                        u"MachineNo:1",
                        u"ServiceNo:30web服务",
                        u"StatusNo:2正常",
                        u"AutoNo:0",
                        u"SMSableNo:1",
                        u"EmailableNo:1",
                        u"MachineName:srv",
                        u"Memo:Mon\r.\nQUIT",
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
