#include "mail/base64.h"
#include "mail/server_address.h"

#include <gtest/gtest.h>

namespace tarnex {
namespace {

TEST(Base64, StandardVectorsAndHighBytes) {
    const std::pair<std::string, std::string> rows[] = {
        {"", ""}, {"a", "YQ=="}, {"ab", "YWI="}, {"abc", "YWJj"}, {"\xFB\xFF\xFE", "+//+"}};
    for (const auto& [bytes, text] : rows)
        EXPECT_EQ(Base64Encode(bytes), text);
}

TEST(ServerAddress, HostAndPort) {
    for (const auto& [text, host, port] : {std::tuple(u"smtp.example", u"smtp.example", 25),
                                           {u" h : 1 ", u"h", 1},
                                           {u"h:65535", u"h", 65535}}) {
        const ServerAddress address = ParseServerAddress(text).value();
        EXPECT_EQ(address.host, host);
        EXPECT_EQ(address.port, port);
    }
    for (const TextView none : {u"h:65536", u"h:0", u"h:", u"h:25x", u"h:2.5", u"h:-1",
                                u"h:99999999999999999999", u"h:25:26", u":25", u" ", u""})
        EXPECT_FALSE(ParseServerAddress(none)) << ToUtf8(none);
}

} // namespace
} // namespace tarnex
