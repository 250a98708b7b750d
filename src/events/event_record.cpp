#include "events/event_record.h"

#include <algorithm>
#include <span>

namespace tarnex {

namespace {

constexpr std::size_t kHeadLength = 7; // all the fields in front of the machine name

// Up to `length` characters of the head; a short head gives fewer, or none.
TextView Field(TextView head, std::size_t start, std::size_t length) {
    return start < head.size() ? head.substr(start, length) : TextView();
}

std::int16_t Number(TextView field) {
    return LeadingInt16(field).value_or(0);
}

Text Flag(TextView field) {
    return field.empty() ? Text(u"0") : Text(field);
}

struct Name {
    int index;
    TextView text;
};

// clang-format off
constexpr Name kServiceNames[] = {
    { 1, u"上次发生Tarnex软件异常退出或异常关机行为"},
    { 2, u"内存状态"},
    { 3, u"CPU负荷"},
    {10, u"Ping IP1响应"},
    {11, u"Ping IP2响应"},
    {20, u"文件监控"},
    {30, u"web服务"},
    {31, u"ftp服务"},
    {32, u"pop服务"},
    {33, u"smtp服务"},
    {50, u"储存空间"},
    {80, u"通讯"},
    {90, u"整机"},
};
constexpr Name kStateNames[]   = {{1, u"异常"}, {2, u"正常"}, {3, u"丢失"}};
constexpr Name kActionNames[]  = {{1, u"服务开始重启"}, {3, u"设备开始重启"}, {4, u"系统尝试恢复"}};
constexpr Name kCommandNames[] = {{1, u"重启/开启"}, {2, u"关闭"}};
// clang-format on

std::optional<TextView> Find(std::span<const Name> names, int index, int last) {
    if (index < 0 || index > last)
        return std::nullopt;
    const auto found = std::ranges::find(names, index, &Name::index);
    return found == names.end() ? TextView() : found->text;
}

} // namespace

EventRecord ParsedRecord(TextView record) {
    const std::size_t delimiter = record.find(kMemoDelimiter);
    const TextView head = record.substr(0, delimiter);
    EventRecord event;
    event.MachineNo = Number(Field(head, 0, 1));
    event.ServiceNo = Number(Field(head, 1, 2));
    event.StatusNo = ToText(Number(Field(head, 3, 1)));
    event.AutoNo = Number(Field(head, 4, 1));
    event.SMSableNo = Flag(Field(head, 5, 1));
    event.EmailableNo = Flag(Field(head, 6, 1));
    event.MachineName = Field(head, kHeadLength, TextView::npos);
    if (delimiter != TextView::npos)
        event.Memo = record.substr(delimiter + kMemoDelimiter.size());
    return event;
}

std::optional<TextView> ServiceName(int index) {
    return Find(kServiceNames, index, 90);
}
std::optional<TextView> StateName(int index) {
    return Find(kStateNames, index, 9);
}
std::optional<TextView> ActionName(int index) {
    return Find(kActionNames, index, 9);
}
std::optional<TextView> CommandName(int index) {
    return Find(kCommandNames, index, 9);
}

} // namespace tarnex
