#include "tools/ocx_debug.h"

#include "device/command_sender.h"
#include "device/firmware_link.h"
#include "device/flash_report.h"
#include "platform/calendar_text.h"
#include "settings/setting_table.h"

#include <algorithm>

namespace tarnex {

namespace {

constexpr Duration kSmsPeriod = 3s;
constexpr Duration kDebugAddressPeriod = 100ms;
constexpr Duration kSendPoll = 200ms;
constexpr int kWide = 15530;  // twips, with the debug output
constexpr int kNarrow = 9915; // twips
constexpr int kConnectButton = 1;
constexpr int kLeaveButton = 6;
constexpr int kDebugButton = 43;
constexpr TextView kDebugConnect = u"连接Tarnex";
constexpr TextView kDebugDisconnect = u"断开Tarnex";
constexpr TextView kOpenDebug = u"打开OCXDebug";
constexpr TextView kCloseDebug = u"关闭OCXDebug";
constexpr std::size_t kSerialDigits = 4;
constexpr char kFirmwareFile[] = "Tarnex_20050626.hex"; // in the current folder

struct SavedBox {
    TextBox OCXDebug::*box;
    TextView key;
    TextView test_value;
};
// clang-format off
constexpr SavedBox kSavedBoxes[] = {
    {&OCXDebug::Text1, u"TelNo1",     u"13900000001"},
    {&OCXDebug::Text2, u"TelNo2",     u"13900000002"},
    {&OCXDebug::Text3, u"SMSCenter",  u"+8613010888500"},
    {&OCXDebug::Text4, u"TarnexName", u"脚脚(设备名)"},
    {&OCXDebug::Text5, u"Message",    u"这是Tarnex OCXDebug发出的测试信息。"},
};
// clang-format on

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

OCXDebug::OCXDebug(const ToolWorld& world)
    : ToolForm("OCXDebug", u"OCXDebug", world),
      GetSMSTimer(world.clock, kSmsPeriod, [this] { GetSMS(); }),
      GetAddrTimer(world.clock, kDebugAddressPeriod,
                   [this] {
                       if (const Text& address = link_.core.firmware.HEXWriteAddr();
                           !address.empty()) // "Erase" stands there until then
                           Text6.SetValue(address);
                   }),
      link_(
          world, [this] { HardwareLost(); }, this) {
    for (ListBox* list : {&DebugList, &TrafficList})
        list->KeepAtMost(ListBox::kLinesUnseen); // no button clears them
    timers_.Add(GetSMSTimer);
    timers_.Add(GetAddrTimer);
    for (int number = 1; number <= kButtons; ++number) {
        const ConsoleCommand& command = kCommands[std::size_t(number - 1)];
        auto& button = buttons_[std::size_t(number - 1)];
        button = std::make_unique<Button>(*this, "Command" + std::to_string(number),
                                          Text(command.caption));
        button->OnClick([this, number] { Start(Press(number)); });
    }
    for (const SavedBox& saved : kSavedBoxes)
        (this->*saved.box).OnLeave([this] { SaveBoxes(); });
    link_.core.firmware.OnStep([this](const Text& line) { Log(line); });
    AskBeforeEnd([this] { return link_.core.firmware.ProgramIncomplete(); },
                 [this] { Log(Text(kCloseWarning)); });
}

void OCXDebug::Form_Load() {
    if (!OnlyCopy())
        return;
    LoadBoxes();
    SetWidth(kNarrow);
    Text6.SetVisible(false);
    DebugList.SetVisible(false);
    TrafficList.SetVisible(false);
    DisableButtons();
    EnableButtons();
    link_.core.Init();
    const CalendarTime now = world_.clock.Calendar();
    Text7.SetValue(ToText(now.year % 100, 2) + ToText(now.month, 2) + ToText(now.day, 2) +
                   u"5x0000");
    GetSMSTimer.Enable();
    SetVisible(true);
}

void OCXDebug::AddLine(List list, const Text& line) {
    (list == List::kTraffic ? TrafficList : DebugList).Add(line);
}

void OCXDebug::DisableButtons() {
    for (const auto& button : buttons_)
        button->SetEnabled(false);
}

// Without a unit there is nothing to do but to connect one, or to leave. What a button did may have
// closed the port, or an adapter was pulled meanwhile.
void OCXDebug::EnableButtons() {
    const bool connected = link_.core.discovery.ConnectStatus() != 0;
    Command(kConnectButton).SetCaption(Text(connected ? kDebugDisconnect : kDebugConnect));
    for (int number = 1; number <= kButtons; ++number)
        if (connected || number == kConnectButton || number == kLeaveButton)
            Command(number).SetEnabled(true);
}

void OCXDebug::LoadBoxes() {
    for (const SavedBox& saved : kSavedBoxes)
        (this->*saved.box).SetValue(link_.ini.GetIniStr(kConsoleSection, saved.key));
}

void OCXDebug::SaveBoxes() {
    for (const SavedBox& saved : kSavedBoxes)
        link_.ini.WriteIniStr(kConsoleSection, saved.key, (this->*saved.box).Value());
}

void OCXDebug::GetSMS() {
    SMSModem& sms = link_.core.sms;
    if (sms.GetSMS() != u"NewMsg")
        return;
    List2.Add(u"查询时间:" + TimeText(world_.clock.Calendar()));
    List2.Add(u"号码:" + sms.GetSMSTelNo());
    List2.Add(u"日期:" + sms.GetSMSDate() + u"  时间:" + sms.GetSMSTime());
    List2.Add(u"内容:" + sms.GetSMSMsg());
    List2.Add(u"");
}

// A pulled adapter disconnects as the button does; a command at work tells it by its answer.
void OCXDebug::HardwareLost() {
    if (Busy())
        link_.core.discovery.ConnectClose();
    else
        Start(Press(kConnectButton));
}

Task<> OCXDebug::Press(int number) {
    DisableButtons();
    co_await Run(number);
    EnableButtons();
}

Task<> OCXDebug::Run(int number) {
    const ConsoleCommand& command = kCommands[std::size_t(number - 1)];
    if (command.procedure) {
        co_await (this->*command.procedure)();
        co_return;
    }
    Log(Text(command.label));
    const Text answer = co_await command.call(link_.core.commands, *this);
    Log(answer);
    if (command.box)
        (this->*command.box).SetValue(answer);
}

Task<> OCXDebug::ToggleLink() {
    Discovery& discovery = link_.core.discovery;
    if (Command(kConnectButton).Caption() == kDebugConnect) {
        Log(u"正在连接Tarnex.");
        const int port = co_await discovery.Connect(Discovery::Ports::kAll);
        if (port != 0) {
            Log(u"已在Com" + ToText(port) + u"成功连接Tarnex.");
        } else {
            Log(u"无法连接Tarnex.");
        }
    } else {
        Log(u"正在断开Tarnex.");
        discovery.ConnectClose();
        Log(u"已经断开Tarnex.");
        Log(u"------------------");
    }
}

Task<> OCXDebug::Leave() {
    if (link_.core.discovery.ConnectStatus() != 0)
        link_.core.discovery.ConnectClose();
    Form_Unload();
    co_return;
}

Task<> OCXDebug::SendAndWait() {
    co_await Run(30);
    co_await Run(25);
    Log(u"发送任务已交送Tarnex");
    Text state = link_.core.sms.SMSSendChk();
    while (state == u"Busy") {
        co_await Sleep(world_.clock, kSendPoll);
        state = link_.core.sms.SMSSendChk();
    }
    Log(state);
    Log(u"发送完毕，复查结果");
}

Task<> OCXDebug::Initialise() {
    static constexpr int kSteps[] = {10, 11, 7, 8, 9, 31, 12, 16, 22};
    for (const int number : kSteps)
        co_await Run(number);
    Log(u"初始化完毕");
}

Task<> OCXDebug::AlarmsOff() {
    co_await Run(20);
    co_await Run(22);
}

Task<> OCXDebug::Upgrade() {
    TarnexCore& core = link_.core;
    FirmwareFile file = ReadFirmwareFile(world_.files, kFirmwareFile);
    if (!file.Sendable()) {
        ListFailure(file.verdict, core.discovery.ConnectClose());
        co_return;
    }
    const Text greeting = co_await core.discovery.HelloTarnex();
    if (greeting != kOk) {
        Log(greeting == u"INIT" ? u"设备正在初始化,请稍候再试." : greeting);
        co_return;
    }
    const std::function<void(const Text&)> add = [this](const Text& line) { Log(line); };
    co_await ListIdentity(core.commands, true, add);
    Log(Text(kLogRule));
    Log(u"正在升级Firmware,请等待.");
    Log(u"");
    co_await core.commands.RESET();
    const int port = core.discovery.ConnectClose();
    Text6.SetValue(u"Erase");
    Text6.SetVisible(true);
    GetAddrTimer.Enable();
    HexProgram program = file.summary.TakeProgram();
    const bool upgraded = co_await core.firmware.FirmwareFlash(port, std::move(program));
    if (upgraded) {
        Log(u"升级成功!");
        co_await Run(kConnectButton);
        GetAddrTimer.Disable();
        Text6.SetVisible(false);
    } else {
        ListFailure(core.firmware.Progress(), port);
    }
}

void OCXDebug::ListFailure(const FlashProgress& progress, int port) {
    Log(u"升级失败!");
    const std::string command = UpdateCommand("COM" + std::to_string(port), kFirmwareFile);
    for (const Text& line : FailureInChinese(progress, command))
        Log(line);
}

Task<> OCXDebug::ToggleDebug() {
    Button& button = Command(kDebugButton);
    const bool on = button.Caption() == kOpenDebug;
    button.SetCaption(Text(on ? kCloseDebug : kOpenDebug));
    Log(on ? u"OCXDebug信息已打开" : u"OCXDebug信息已关闭");
    SetWidth(on ? kWide : kNarrow);
    DebugList.SetVisible(on);
    TrafficList.SetVisible(on);
    link_.lists.DebugOn = on;
    link_.core.OCXDebug(on ? u"On" : u"Off");
    co_return;
}

Task<> OCXDebug::FillTestValues() {
    for (const SavedBox& saved : kSavedBoxes)
        (this->*saved.box).SetValue(Text(saved.test_value));
    SaveBoxes();
    co_return;
}

// The last four characters count up; behind 9999 the number becomes a digit longer.
Task<Text> OCXDebug::WriteNextSerial() {
    Text serial = Text7.Value();
    const std::size_t kept = serial.size() - std::min(serial.size(), kSerialDigits);
    const auto next = (long long)(LeadingNumber(serial.substr(kept))) + 1;
    serial.resize(kept);
    serial += ToText(next, int(kSerialDigits));
    Text7.SetValue(serial);
    return link_.core.commands.WRSerial(serial);
}

} // namespace tarnex
