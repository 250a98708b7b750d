#include "tools/ocx_debug.h"

#include "device/command_sender.h"
#include "device/firmware_link.h"
#include "device/flash_report.h"
#include "platform/calendar_text.h"
#include "tools/unit_identity.h"

#include <algorithm>

namespace tarnex {

namespace {

constexpr Duration kSmsPeriod = 3s;
constexpr Duration kAddressPeriod = 100ms;
constexpr Duration kSendPoll = 200ms;
constexpr int kWide = 15530;  // twips, with the debug output
constexpr int kNarrow = 9915; // twips
constexpr int kConnectButton = 1;
constexpr int kLeaveButton = 6;
constexpr int kDebugButton = 43;
constexpr TextView kConnect = u"连接Tarnex";
constexpr TextView kDisconnect = u"断开Tarnex";
constexpr TextView kOpenDebug = u"打开OCXDebug";
constexpr TextView kCloseDebug = u"关闭OCXDebug";
constexpr TextView kSection = u"TarnexDebug";
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

} // namespace

OCXDebug::OCXDebug(const ToolWorld& world)
    : ToolForm("OCXDebug", u"OCXDebug", world),
      GetSMSTimer(world.clock, "GetSMSTimer", kSmsPeriod, [this] { GetSMS(); }),
      GetAddrTimer(world.clock, "GetAddrTimer", kAddressPeriod,
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
    link_.core.firmware.SetDisplay(
        {.List1Additem = [this](const Text& line) { Log(line); }, .show_address = [] {}});
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
    Command(kConnectButton).SetCaption(Text(connected ? kDisconnect : kConnect));
    for (int number = 1; number <= kButtons; ++number)
        if (connected || number == kConnectButton || number == kLeaveButton)
            Command(number).SetEnabled(true);
}

void OCXDebug::LoadBoxes() {
    for (const SavedBox& saved : kSavedBoxes)
        (this->*saved.box).SetValue(link_.ini.GetIniStr(kSection, saved.key));
}

void OCXDebug::SaveBoxes() {
    for (const SavedBox& saved : kSavedBoxes)
        link_.ini.WriteIniStr(kSection, saved.key, (this->*saved.box).Value());
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
    if (Command(kConnectButton).Caption() == kConnect) {
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
