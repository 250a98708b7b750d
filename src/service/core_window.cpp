#include "service/core_window.h"

#include "device/command_sender.h"
#include "device/firmware_link.h"
#include "device/flash_report.h"

namespace tarnex {

namespace {

constexpr TextView kCSQStart = u"CSQ Start";
constexpr TextView kCSQStop = u"CSQ Stop";
constexpr TextView kTestMessage = u"这是Tarnex发出的测试信息。";
constexpr char kFirmwareFile[] = "Tarnex_20050626.hex"; // in the current folder

} // namespace

// clang-format off
const std::array<CoreWindow::TestButton, CoreWindow::kButtons> CoreWindow::kTests = {{
    {"CMDCSQ",        kCSQStart,      false, &CoreWindow::ToggleCSQ},
    {"CMDRDNO",       u"RDNO",        true,  &CoreWindow::RDNO},
    {"CMDRDCSCA",     u"RDCSCA",      true,  &CoreWindow::RDCSCA},
    {"CMDGetComFifo", u"GetComFifo",  false, &CoreWindow::GetComFifo},
    {"CMDSendSMS1",   u"SendSMS1",    true,  &CoreWindow::SendSMS1},
    {"CMDSendSMS2",   u"SendSMS2",    true,  &CoreWindow::SendSMS2},
    {"CMDSMSSendChk", u"SMSSendChk",  false, &CoreWindow::SMSSendChk},
    {"CMDInit",       u"Init",        true,  &CoreWindow::Init},
    {"CMDReset",      u"Reset",       true,  &CoreWindow::Reset},
    {"CMDDebugOn",    u"DebugOn",     false, &CoreWindow::DebugOn},
    {"CMDDebugOff",   u"DebugOff",    false, &CoreWindow::DebugOff},
    {"CMDFirmware",   u"Firmware",    true,  &CoreWindow::Firmware},
}};
// clang-format on

CoreWindow::CoreWindow(Parts parts) : Form("TarnexCore", u"TarnexCore"), parts_(std::move(parts)) {
    for (std::size_t i = 0; i < kButtons; ++i) {
        const TestButton& test = kTests[i];
        buttons_[i] = std::make_unique<Button>(*this, test.name, Text(test.caption));
        buttons_[i]->OnClick([this, &test] { Press(test); });
    }
    Results.KeepAtMost(ListBox::kLinesUnseen); // no button clears it
    OnClose([this] { SetVisible(false); });
    parts_.core.firmware.OnStep([this](const Text& line) { Results.Add(line); });
}

void CoreWindow::Press(const TestButton& test) {
    running_ = Run(test);
    running_.Start();
}

void CoreWindow::Enable(bool enabled) {
    for (const auto& button : buttons_)
        button->SetEnabled(enabled);
}

Task<> CoreWindow::Run(const TestButton& test) {
    const Text name = Text(test.caption == kCSQStart ? u"CSQ" : test.caption) + u": ";
    std::optional<UnitGuard> guard;
    if (test.needs_unit && !guard.emplace(parts_.unit).Taken()) {
        Results.Add(name + u"服务正在使用设备，请稍候再按。");
        co_return;
    }
    Enable(false);
    const Text result = co_await (this->*test.run)();
    Enable(true);
    Results.Add(name + (result.empty() ? u"设备没有连接。" : result));
}

Task<Text> CoreWindow::ToggleCSQ() {
    Button& button = *buttons_.front();
    Timer& timer = parts_.core.commands.CSQTimer;
    const bool start = button.Caption() == kCSQStart;
    if (start)
        timer.Enable();
    else
        timer.Disable();
    button.SetCaption(Text(start ? kCSQStop : kCSQStart));
    co_return Text(start ? u"每秒查询一次，结果在主窗口的“设备调试”中。" : u"停止查询。");
}

Task<Text> CoreWindow::GetComFifo() {
    co_return parts_.core.GetComFifo();
}

Task<Text> CoreWindow::SendSMS1() {
    return parts_.core.sms.SendSMS(Text(kTestMessage), 1);
}

Task<Text> CoreWindow::SendSMS2() {
    return parts_.core.sms.SendSMS(Text(kTestMessage), 2);
}

Task<Text> CoreWindow::SMSSendChk() {
    co_return parts_.core.sms.SMSSendChk();
}

Task<Text> CoreWindow::Init() {
    parts_.core.Init();
    co_return Text(kOk);
}

Task<Text> CoreWindow::DebugOn() {
    parts_.core.OCXDebug(u"On");
    co_return Text(u"On");
}

Task<Text> CoreWindow::DebugOff() {
    parts_.core.OCXDebug(u"Off");
    co_return Text(u"Off");
}

// The unit stays taken meanwhile, so that nothing else is written to the line; afterwards the
// service looks for the unit anew.
Task<Text> CoreWindow::Firmware() {
    TarnexCore& core = parts_.core;
    FirmwareFile file = ReadFirmwareFile(parts_.files, kFirmwareFile);
    if (!file.Sendable())
        co_return ListFailure(file.verdict, 0);
    if (core.discovery.ConnectStatus() == 0)
        co_return u""; // Init has forgotten the port
    if (buttons_.front()->Caption() == kCSQStop)
        co_await ToggleCSQ();
    Results.Add(u"正在升级Firmware,请等待.");
    co_await core.commands.RESET_NOBACK();
    const int port = core.discovery.ConnectClose();
    HexProgram program = file.summary.TakeProgram();
    const bool upgraded = co_await core.firmware.FirmwareFlash(port, std::move(program));
    parts_.set_to_research();
    if (!upgraded)
        co_return ListFailure(core.firmware.Progress(), port);
    co_return Text(u"升级成功!");
}

Text CoreWindow::ListFailure(const FlashProgress& progress, int port) {
    const std::string command = UpdateCommand("COM" + std::to_string(port), kFirmwareFile);
    for (const Text& line : FailureInChinese(progress, command))
        Results.Add(line);
    // The command needs the port that the service has.
    return ProgramTouched(progress) ? u"升级失败! 请停止服务，再运行以上恢复命令。" : u"升级失败!";
}

} // namespace tarnex
