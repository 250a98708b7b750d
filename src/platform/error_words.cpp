#include "platform/error_words.h"

#include <algorithm>

namespace tarnex {

namespace {

struct Row {
    std::errc error;
    const char* english;
    TextView chinese;
};

// clang-format off
constexpr Row kRows[] = {
    {std::errc::address_in_use,                     "address already in use",              u"地址已被占用"},
    {std::errc::address_not_available,              "not an address of this machine",      u"本机没有这个地址"},
    {std::errc::broken_pipe,                        "connection broken",                   u"连接中断"},
    {std::errc::connection_aborted,                 "connection broken",                   u"连接中断"},
    {std::errc::connection_refused,                 "connection refused",                  u"连接被拒绝"},
    {std::errc::connection_reset,                   "connection reset by the other side",  u"连接被对方重置"},
    {std::errc::device_or_resource_busy,            "the device is busy",                  u"设备正忙"},
    {std::errc::file_too_large,                     "the file is too large",               u"文件太大"},
    {std::errc::filename_too_long,                  "the name is too long",                u"文件名太长"},
    {std::errc::function_not_supported,             "not possible on this system",         u"本系统不支持"},
    {std::errc::host_unreachable,                   "no route to the host",                u"无法到达主机"},
    {std::errc::inappropriate_io_control_operation, "it is no serial line",                u"这不是串口"},
    {std::errc::invalid_argument,                   "not possible here",                   u"此处不能这样操作"},
    {std::errc::io_error,                           "input/output error",                  u"读写错误"},
    {std::errc::is_a_directory,                     "it is a folder",                      u"这是一个文件夹"},
    {std::errc::network_down,                       "the network is down",                 u"网络已断开"},
    {std::errc::network_reset,                      "the network broke the connection",    u"网络中断了连接"},
    {std::errc::network_unreachable,                "the network is unreachable",          u"无法到达网络"},
    {std::errc::no_buffer_space,                    "no buffer space left",                u"缓冲区不足"},
    {std::errc::no_space_on_device,                 "no space left on the device",         u"磁盘空间不足"},
    {std::errc::no_such_device,                     "no such device",                      u"没有这个设备"},
    {std::errc::no_such_device_or_address,          "no such device",                      u"没有这个设备"},
    {std::errc::no_such_file_or_directory,          "no such file or folder",              u"没有这个文件或文件夹"},
    {std::errc::not_a_directory,                    "a part of the path is no folder",     u"路径中有一部分不是文件夹"},
    {std::errc::not_connected,                      "connection broken",                   u"连接中断"},
    {std::errc::not_enough_memory,                  "not enough memory",                   u"内存不足"},
    {std::errc::operation_not_permitted,            "not permitted",                       u"不允许这样操作"},
    {std::errc::operation_not_supported,            "not possible here",                   u"此处不能这样操作"},
    {std::errc::permission_denied,                  "permission denied",                   u"没有权限"},
    {std::errc::read_only_file_system,              "the file system is read-only",        u"文件系统是只读的"},
    {std::errc::resource_unavailable_try_again,     "the system is short of resources",    u"系统资源不足"},
    {std::errc::text_file_busy,                     "the file is a program that runs",     u"该文件是正在运行的程序"},
    {std::errc::timed_out,                          "no answer in time",                   u"没有及时应答"},
    {std::errc::too_many_files_open,                "too many open files",                 u"打开的文件太多"},
    {std::errc::too_many_files_open_in_system,      "too many open files on this machine", u"本机打开的文件太多"},
    {std::errc::too_many_symbolic_link_levels,      "too many links lead to one another",  u"符号链接的层数太多"},
    {std::errc::value_too_large,                    "the file is too large",               u"文件太大"},
};
// Of adapters, for what is no error of the system.
constexpr std::pair<const char*, TextView> kOwnWords[] = {
    {"closed by the other side", u"对方关闭了连接"},
    {"it is no plain file",      u"这不是普通文件"},
};
// clang-format on

constexpr std::string_view kUnknown = "system error ";

} // namespace

std::string WordsFor(const std::error_code& error) {
    // Libraries have categories of their own for the system's numbers, and know fewer of them.
    const std::error_code known = error.category() == std::generic_category()
                                      ? error
                                      : std::error_code(error.value(), std::system_category());
    const auto row =
        std::ranges::find_if(kRows, [&](const Row& each) { return known == each.error; });
    return row != std::end(kRows) ? row->english
                                  : std::string(kUnknown) + std::to_string(error.value());
}

Text InChinese(std::string_view english) {
    for (const auto& [words, chinese] : kOwnWords)
        if (words == english)
            return Text(chinese);
    for (const Row& row : kRows)
        if (row.english == english)
            return Text(row.chinese);
    if (english.starts_with(kUnknown))
        return u"系统错误" + FromUtf8(english.substr(kUnknown.size()));
    return FromUtf8(english);
}

} // namespace tarnex
