#include "tools/ocx_debug.h"

namespace tarnex {

namespace {

using U = CommandSet;
using C = OCXDebug;

Task<Text> Ready(Text answer) {
    co_return answer;
}

} // namespace

// Commands 19 and 21 name the other's alarm. Staff know them so.
// clang-format off
const std::array<OCXDebug::ConsoleCommand, OCXDebug::kButtons> OCXDebug::kCommands = {{
    // caption                label                  call                                                                   box               procedure
    {u"连接Tarnex",         u"",                   nullptr,                                                               nullptr,          &OCXDebug::ToggleLink},
    {u"读第一报警电话",     u"读第一报警电话",     [](U& u, C&) { return u.RDNO(u"1"); },                                 &OCXDebug::Text1, nullptr},
    {u"读第二报警电话",     u"读第二报警电话",     [](U& u, C&) { return u.RDNO(u"2"); },                                 &OCXDebug::Text2, nullptr},
    {u"读取短消息中心",     u"读取短消息中心",     [](U& u, C&) { return u.RDCSCA(); },                                   &OCXDebug::Text3, nullptr},
    {u"复位Tarnex",         u"复位Tarnex",         [](U& u, C&) { return u.RESET(); },                                    nullptr,          nullptr},
    {u"退　出",             u"",                   nullptr,                                                               nullptr,          &OCXDebug::Leave},
    {u"写电话号码1",        u"写电话号码1",        [](U& u, C& c) { return u.WRNO(c.Text1.Value(), u"1"); },              nullptr,          nullptr},
    {u"写电话号码2",        u"写电话号码2",        [](U& u, C& c) { return u.WRNO(c.Text2.Value(), u"2"); },              nullptr,          nullptr},
    {u"写短消息中心",       u"写短消息中心",       [](U& u, C& c) { return u.WRCSCA(c.Text3.Value()); },                  nullptr,          nullptr},
    {u"LCD1测试",           u"LCD1测试",           [](U& u, C&) { return u.LCD(u"This is Line 1.", u"1"); },              nullptr,          nullptr},
    {u"LCD2测试",           u"LCD2测试",           [](U& u, C&) { return u.LCD(u"This is Line 2.", u"2"); },              nullptr,          nullptr},
    {u"写通讯报警1分",      u"写通讯报警1分",      [](U& u, C&) { return u.WRDT(u"1"); },                                 nullptr,          nullptr},
    {u"写通讯报警3分",      u"写通讯报警3分",      [](U& u, C&) { return u.WRDT(u"3"); },                                 nullptr,          nullptr},
    {u"LCD控制释放",        u"LCD控制释放",        [](U& u, C&) { return u.LCD(u"Free", u"0"); },                         nullptr,          nullptr},
    {u"读通讯报警时间",     u"读通讯报警时间",     [](U& u, C&) { return u.RDDT(); },                                     nullptr,          nullptr},
    {u"写报警次数1",        u"写报警次数1",        [](U& u, C&) { return u.WRAT(u"1"); },                                 nullptr,          nullptr},
    {u"写报警次数2",        u"写报警次数2",        [](U& u, C&) { return u.WRAT(u"2"); },                                 nullptr,          nullptr},
    {u"读报警次数",         u"读报警次数",         [](U& u, C&) { return u.RDAT(); },                                     nullptr,          nullptr},
    {u"打开通讯报警",       u"打开通讯报警",       [](U& u, C&) { return u.TXPWR(u"On"); },                               nullptr,          nullptr},
    {u"关闭电源报警",       u"关闭电源报警",       [](U& u, C&) { return u.TXPWR(u"Off"); },                              nullptr,          nullptr},
    {u"打开电源报警",       u"打开电源报警",       [](U& u, C&) { return u.TXCON(u"On"); },                               nullptr,          nullptr},
    {u"关闭通讯报警",       u"关闭通讯报警",       [](U& u, C&) { return u.TXCON(u"Off"); },                              nullptr,          nullptr},
    {u"读报警状态",         u"读报警状态",         [](U& u, C&) { return u.RDALARM(); },                                  nullptr,          nullptr},
    {u"读序列号",           u"读序列号",           [](U& u, C&) { return u.RDSerial(); },                                 &OCXDebug::Text7, nullptr},
    {u"向第一报警发信",     u"向第一报警发信",     [](U&, C& c) { return c.link_.core.sms.SendSMS(c.TestMessage(), 1); }, nullptr,          nullptr},
    {u"向第二报警发信",     u"向第二报警发信",     [](U&, C& c) { return c.link_.core.sms.SendSMS(c.TestMessage(), 2); }, nullptr,          nullptr},
    {u"读取短信发送状态",   u"读取短信发送状态",   [](U&, C& c) { return Ready(c.link_.core.sms.SMSSendChk()); },         nullptr,          nullptr},
    {u"读取Tarnex发出命令", u"读取Tarnex发出命令", [](U&, C& c) { return Ready(c.link_.core.GetComFifo()); },             nullptr,          nullptr},
    {u"发送并等待结果",     u"",                   nullptr,                                                               nullptr,          &OCXDebug::SendAndWait},
    {u"全部初始化",         u"",                   nullptr,                                                               nullptr,          &OCXDebug::Initialise},
    {u"发送PC报警",         u"发送PC报警",         [](U& u, C&) { return u.PCAlarm(u"Help me please!"); },                nullptr,          nullptr},
    {u"解除PC报警",         u"解除PC报警",         [](U& u, C&) { return u.PCAlarmOff(); },                               nullptr,          nullptr},
    {u"关闭全部报警",       u"",                   nullptr,                                                               nullptr,          &OCXDebug::AlarmsOff},
    {u"读取Name参数",       u"读取Name参数",       [](U& u, C&) { return u.RDName(); },                                   &OCXDebug::Text4, nullptr},
    {u"写入Name",           u"写入Name",           [](U& u, C& c) { return u.WRName(c.Text4.Value()); },                  nullptr,          nullptr},
    {u"读取CSQ",            u"读取CSQ",            [](U& u, C&) { return u.RDCSQ(); },                                    nullptr,          nullptr},
    {u"允许Name",           u"允许Name",           [](U& u, C&) { return u.NameMode(u"On"); },                            nullptr,          nullptr},
    {u"禁止Name",           u"禁止Name",           [](U& u, C&) { return u.NameMode(u"Off"); },                           nullptr,          nullptr},
    {u"Hello, tarnex",      u"Hello, tarnex",      [](U&, C& c) { return c.link_.core.discovery.HelloTarnex(); },         nullptr,          nullptr},
    {u"读取Name状态",       u"读取Name状态",       [](U& u, C&) { return u.NameMode(u"Get"); },                           nullptr,          nullptr},
    {u"升级Firmware",       u"",                   nullptr,                                                               nullptr,          &OCXDebug::Upgrade},
    {u"读取硬件版本",       u"读取硬件版本",       [](U& u, C&) { return u.ChkVer(); },                                   nullptr,          nullptr},
    {u"打开OCXDebug",       u"",                   nullptr,                                                               nullptr,          &OCXDebug::ToggleDebug},
    {u"填入测试数据",       u"",                   nullptr,                                                               nullptr,          &OCXDebug::FillTestValues},
    {u"写序列号",           u"写序列号",           [](U&, C& c) { return c.WriteNextSerial(); },                          nullptr,          nullptr},
}};
// clang-format on

} // namespace tarnex
