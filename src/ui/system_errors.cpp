#include "ui/system_errors.h"

#include <algorithm>
#include <iterator>

namespace tarnex {

namespace {

struct ErrorRow {
    std::string_view error; // in small letters
    TextView chinese;
};
// clang-format off
constexpr ErrorRow kErrors[] = {
    {"connection refused",                                u"连接被拒绝"},
    {"connection timed out",                              u"连接超时"},
    {"connection reset by peer",                          u"连接被对方中断"},
    {"broken pipe",                                       u"连接被对方中断"},
    {"closed by the other side",                          u"对方关闭了连接"},
    {"network is unreachable",                            u"网络不通"},
    {"network is down",                                   u"网络不通"},
    {"no route to host",                                  u"找不到通往主机的路由"},
    {"host is down",                                      u"主机没有开机"},
    {"host not found (authoritative)",                    u"没有这个主机名"},
    {"host not found (non-authoritative), try again later", u"暂时不能查询主机名"},
    {"a non-recoverable error occurred during database lookup", u"不能查询主机名"},
    {"the query is valid, but it does not have associated data", u"这个主机名没有地址"},
};
// clang-format on

} // namespace

Text SystemErrorInChinese(std::string_view error) {
    std::string small(error);
    for (char& c : small)
        if (c >= 'A' && c <= 'Z')
            c = char(c - 'A' + 'a');
    const auto* const row = std::ranges::find(kErrors, small, &ErrorRow::error);
    return row == std::end(kErrors) ? FromUtf8(error) : Text(row->chinese);
}

} // namespace tarnex
