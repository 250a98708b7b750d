#include "notify/sms_msg_codec.h"
#include "tests/notify/notify_rig.h"

namespace tarnex {
namespace {

using SMSMsgCodecTest = NotifyRig;

TEST_F(SMSMsgCodecTest, CommandsAreJudgedByTheNumbersInTheFileNow) {
    store.SetContent("[Text]\nText1(34)=13800000001\nText1(35)=13900000002\n");
    const SMSMsgCodec codec(clock, ini);
    EXPECT_EQ(codec.DecodeSMSCommand(u"13900000002", u"1301"),
              u"13012系统在06日08:00收到命令：1301--1号设备web服务重启/开启");
    store.SetContent("[Text]\nText1(34)=13900000002\nText1(35)=13900000003\n");
    EXPECT_EQ(codec.DecodeSMSCommand(u"13900000002", u"1301").substr(0, 5), u"13011");
    EXPECT_EQ(codec.DecodeSMSCommand(u"13800000001", u"1301"), u"ETel");
}

constexpr CalendarTime kNow{.year = 2024, .month = 5, .day = 6, .hour = 8, .minute = 3};
constexpr TextView kFirst = u"13800000001";
constexpr TextView kSecond = u"13900000002";

TEST(CommandAnswer, FollowsTheText) {
    // clang-format off
    const std::pair<TextView, TextView> rows[] = {
        {u"请执行1301",   u"13011系统在06日08:03收到命令：1301--1号设备web服务重启/开启"},
        {u"9902",         u"99021系统在06日08:03收到命令：9902--9号设备整机关闭"},
        {u"0011x1302",    u"00111系统在06日08:03收到命令：0011--0号设备上次发生Tarnex软件异常退出或异常关机行为重启/开启"},
        {u"130 13021",    u"13021系统在06日08:03收到命令：1302--1号设备web服务关闭"},
        {u"13013",        u"13011系统在06日08:03收到命令：1301--1号设备web服务重启/开启"},
        {u" 130 ",        u"ECmd1系统在06日08:03收到错误命令： 130 "},
        {u"",             u"ECmd1系统在06日08:03收到错误命令："},
        {u"abcd",         u"ECmd1系统在06日08:03 收到错误命令：abcd"},
        {u"１３０１",     u"ECmd1系统在06日08:03 收到错误命令：１３０１"}, // wide digits are none
        {u"1303",         u"ECmd1系统在06日08:03收到错误命令：1303"}, // no such action
        {u"1121",         u"ECmd1系统在06日08:03收到错误命令：1121"}, // no such service
        {u"1911",         u"ECmd1系统在06日08:03收到错误命令：1911"}, // beyond the service names
    };
    // clang-format on
    for (const auto& [text, answer] : rows)
        EXPECT_EQ(
            ToUtf8(CommandAnswer({Text(kFirst), Text(kSecond)}, u"+8613800000001", text, kNow)),
            ToUtf8(answer));
}

TEST(CommandAnswer, NamesTheSenderByTheNumbersThatMatch) {
    const struct {
        TextView first, second, sender, start;
    } rows[] = {
        {kFirst, kSecond, kFirst, u"13011"},
        {kFirst, kSecond, u"0000001", u"13011"}, // contained the other way round
        {kFirst, kSecond, u"+8613900000002", u"13012"},
        {kFirst, kFirst, kFirst, u"13012"},
        {kFirst, kSecond, u"10086", u"ETel"},
        {u"", kSecond, u"10086", u"13011"}, // an empty number admits everybody
        {kFirst, u"", kFirst, u"13012"},
        {kFirst, kSecond, u"", u"13012"},
    };
    for (const auto& row : rows) {
        const Text answer =
            CommandAnswer({Text(row.first), Text(row.second)}, row.sender, u"1301", kNow);
        EXPECT_EQ(ToUtf8(answer.substr(0, 5)), ToUtf8(row.start)) << ToUtf8(row.sender);
    }
}

} // namespace
} // namespace tarnex
