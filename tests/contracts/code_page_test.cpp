#include "adapters/system/system_code_page.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

const SystemCodePage gbk("GBK");
const SystemCodePage utf8("UTF-8");

TEST(SystemCodePage, ConvertsBothWays) {
    const struct {
        const SystemCodePage& code_page;
        Text text;
        std::string bytes;
    } rows[] = {
        {gbk, u"COM1 设备\r\n~", "COM1 \xC9\xE8\xB1\xB8\r\n~"},
        {gbk, u"额镕〇€", "\xB6\xEE\xE9\x46\xA9\x96\x80"}, // beyond GB 2312; trail byte "F"
        {gbk, Text(1, u'\0') + u"。", std::string(1, '\0') + "\xA1\xA3"},
        {utf8, u"设€\U0001F600", "\xE8\xAE\xBE\xE2\x82\xAC\xF0\x9F\x98\x80"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.code_page.Encode(row.text), row.bytes);
        EXPECT_EQ(row.code_page.Decode(row.bytes), row.text) << row.bytes;
        EXPECT_EQ(row.code_page.WholeLength(row.bytes), row.bytes.size()) << row.bytes;
    }
}

TEST(SystemCodePage, WhatCannotBeConvertedBecomesOneQuestionMarkEach) {
    EXPECT_EQ(gbk.Encode(u"a\U0001F600é设b"), "a??\xA8\xA6\xC9\xE8"
                                              "b");      // a surrogate pair is two characters
    EXPECT_EQ(gbk.Encode(u"\uE000\uF8FF\u00A9"), "???"); // no private ones, no similar ones
    EXPECT_EQ(gbk.Decode("\xAA\xA1."), u"?.");
    const char16_t lone[] = {u'x', 0xD83D, u'y', 0};
    EXPECT_EQ(utf8.Encode(lone), "x?y");

    EXPECT_EQ(gbk.Decode("\xFF\xC9\xE8"), u"?设");
    EXPECT_EQ(gbk.Decode("\xC9\x0D\x0A"), u"?\r\n"); // a lead byte never swallows a line end
    EXPECT_EQ(gbk.Decode("\xFE\xFE.\xC9"), u"?.?");  // an unassigned pair, half a character
    EXPECT_EQ(utf8.Decode("\xE8\xAE"
                          "A\xED\xA0\x80\xC0\xAF."),
              u"??A???.");
}

TEST(SystemCodePage, HalfACharacterAtTheEndIsNotWhole) {
    EXPECT_EQ(gbk.WholeLength("\xC9\xE8\xB1"), 2u);
    EXPECT_EQ(gbk.WholeLength("\xC9\xE8\x80"), 3u); // the euro sign is whole
    EXPECT_EQ(gbk.WholeLength("\xC9\x0D\xFF"), 3u);
    EXPECT_EQ(utf8.WholeLength("A\xE8\xAE"), 1u);
    EXPECT_EQ(utf8.WholeLength("A\xF0\x9F\x98"), 1u);
    EXPECT_EQ(utf8.WholeLength("A\xAE\xFF"), 3u);
}

} // namespace
} // namespace tarnex
