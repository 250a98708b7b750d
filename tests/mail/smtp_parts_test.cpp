#include "mail/base64.h"
#include "mail/server_address.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(Base64, StandardVectorsAndHighBytes) {
    const std::pair<std::string, std::string> rows[] = {
        {"", ""},
        {"a", "YQ=="},
        {"ab", "YWI="},
        {"abc", "YWJj"},
        {"foobar", "Zm9vYmFy"},
        {std::string("\0\0", 2), "AAA="},
        {"\xFB\xFF\xFE", "+//+"},
        {"\xD5\xC5", "1cU="}, // one Chinese character in GBK
    };
    for (const auto& [bytes, text] : rows)
        EXPECT_EQ(Base64Encode(bytes), text);
}

TEST(ServerAddress, HostAndPort) {
    struct Row {
        TextView text, host;
        int port;
    };
    for (const Row& row : {Row{u"smtp.example", u"smtp.example", 25},
                           {u"smtp.example:2525", u"smtp.example", 2525},
                           {u" h : 1 ", u"h", 1},
                           {u"h:65535", u"h", 65535}}) {
        const auto address = ParseServerAddress(row.text);
        ASSERT_TRUE(address) << ToUtf8(row.text);
        EXPECT_EQ(address->host, row.host);
        EXPECT_EQ(address->port, row.port);
    }
    for (const TextView none : {u"h:65536", u"h:0", u"h:", u"h:25x", u"h:2.5", u"h:-1",
                                u"h:99999999999999999999", u"h:25:26", u":25", u" ", u""})
        EXPECT_FALSE(ParseServerAddress(none)) << ToUtf8(none);
}

} // namespace
} // namespace tarnex
