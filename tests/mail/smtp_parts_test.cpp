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
        TextView text;
        TextView host; // empty: not an address
        int port;
    };
    const Row rows[] = {
        {u"smtp.example", u"smtp.example", 25},
        {u"smtp.example:2525", u"smtp.example", 2525},
        {u" h : 1 ", u"h", 1},
        {u"h:65535", u"h", 65535},
        {u"h:65536", u"", 0},
        {u"h:0", u"", 0},
        {u"h:", u"", 0},
        {u"h:25x", u"", 0},
        {u"h:2.5", u"", 0},
        {u"h:-1", u"", 0},
        {u"h:99999999999999999999", u"", 0},
        {u"h:25:26", u"", 0},
        {u":25", u"", 0},
        {u" ", u"", 0},
        {u"", u"", 0},
    };
    for (const Row& row : rows) {
        const auto address = ParseServerAddress(row.text);
        ASSERT_EQ(address.has_value(), !row.host.empty()) << ToUtf8(row.text);
        if (address) {
            EXPECT_EQ(address->host, row.host);
            EXPECT_EQ(address->port, row.port);
        }
    }
}

} // namespace
} // namespace tarnex
