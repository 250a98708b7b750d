#include "platform/calendar_text.h"
#include "platform/error_words.h"
#include "platform/text.h"

#include <cerrno>

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(Text, LeadingNumber) {
    for (const auto& [text, number] : {std::pair{u"7a", 7.},
                                       {u"  -12x", -12.},
                                       {u"2.5", 2.5},
                                       {u"", 0.},
                                       {u"a1", 0.},
                                       {u"-", 0.}})
        EXPECT_EQ(LeadingNumber(text), number) << ToUtf8(text);
    EXPECT_EQ(LeadingInt16(u"32767"), 32767);
    EXPECT_EQ(LeadingInt16(u"32768"), std::nullopt);
    EXPECT_EQ(LeadingInt16(u"99999999999999999999"), std::nullopt);
    EXPECT_EQ(LeadingInt16(u"2.5"), 2); // halves go to the even neighbour
}

TEST(Text, TrimTakesBlanksOnly) {
    EXPECT_EQ(Trim(u"  a b\t "), u"a b\t");
    EXPECT_EQ(Trim(u"   "), u"");
    EXPECT_EQ(Trim(u"\u3000x"), u"\u3000x");
}

TEST(Text, ControlCharactersAreEscaped) {
    EXPECT_EQ(EscapeControls(u"~TX:RDNO1\r\n"), u"~TX:RDNO1\\r\\n");
    EXPECT_EQ(EscapeControls(u"电\x1b\x7f\x9f\u00a0"), u"电\\x1B\\x7F\\x9F\u00a0");
    EXPECT_EQ(EscapeControls("\u200d\u200e\u2028\u202e\u2069\u061c\xFF"),
              "\u200d\\u200E\\u2028\\u202E\\u2069\\u061C\uFFFD");
}

// What opening a path may fail with.
TEST(Text, TheSystemsErrorsHaveWords) {
    for (const int error :
         {EACCES, EAGAIN,       EBUSY,      EFBIG,     EINVAL, EIO,    EISDIR, ELOOP,
          EMFILE, ENAMETOOLONG, ENFILE,     ENODEV,    ENOENT, ENOMEM, ENOSPC, ENOTDIR,
          ENOTTY, ENXIO,        EOPNOTSUPP, EOVERFLOW, EPERM,  EROFS,  ETXTBSY}) {
        const std::string words = WordsFor({error, std::generic_category()});
        EXPECT_FALSE(words.starts_with("system error")) << error;
        EXPECT_NE(InChinese(words), FromUtf8(words));
    }
    EXPECT_EQ(InChinese(WordsFor({9999, std::generic_category()})), u"系统错误9999");
}

TEST(Text, Utf8BothWays) {
    for (const Text& text : {Text(u"设备1的CPU"), Text(u"\U0001F600é"), Text(u"\0x", 2)})
        EXPECT_EQ(FromUtf8(ToUtf8(text)), text);
    EXPECT_EQ(ToUtf8(Text(1, char16_t(0xD800))), "\xEF\xBF\xBD");
    EXPECT_EQ(FromUtf8("a\xFF\xE4\xB8z"), u"a\uFFFD\uFFFDz");
    EXPECT_EQ(FromUtf8("\xC0\x80"), u"\uFFFD\uFFFD"); // overlong
}

TEST(TimeOfDay, OnlyTimesAreFormatted) {
    EXPECT_EQ(FormattedHourMinute(u"7:05"), u"07:05");
    EXPECT_EQ(FormattedHourMinute(u"7:05:10"), u"07:05");
    EXPECT_EQ(FormattedHourMinute(u"23:59:59"), u"23:59");
    for (const TextView text : {u"", u"7", u"24:00", u"7:60", u"7:05:60", u"7:05:10:1", u"-1:05",
                                u"7:", u":05", u"007:05", u"a7:05"})
        EXPECT_EQ(FormattedHourMinute(text), text);
}

} // namespace
} // namespace tarnex
