#include "tools/firmware_flasher.h"

#include "platform/calendar_text.h"
#include "tools/firmware_file.h"
#include "tools/flash_report.h"
#include "tools/unit_identity.h"

namespace tarnex {

namespace {

constexpr Duration kAddressPeriod = 100ms;
constexpr TextView kOpen = u"打　开";
constexpr TextView kConnect = u"连　接";
constexpr TextView kDisconnect = u"断　开";

} // namespace

FirmwareFlasher::FirmwareFlasher(const ToolWorld& world, FileDialog& dialog, Text version)
    : ToolForm("FirmwareFlasher", u"(c)Firmware Flasher", world),
      GetAddrTimer(world.clock, "GetAddrTimer", kAddressPeriod,
                   [this] { Text1.SetValue(link_.core.firmware.HEXWriteAddr()); }),
      CommonDialog_(dialog), version_(std::move(version)),
      link_(world, nowhere_, nowhere_, [this] { HardwareLost(); }) {
    timers_.Add(GetAddrTimer);
    Command1.OnClick([this] { Command1_Click(); });
    Command41.OnClick([this] { Start(Upgrade()); });
    OtherFile.OnClick([this] { ChooseFile(); });
    Command6.OnClick([this] { Command6_Click(); });
    link_.core.firmware.SetDisplay(
        {.List1Additem = [this](const Text& line) { List1Additem(line); },
         .show_address = [this] { Text1.SetVisible(true); }});
    AskBeforeEnd([this] { return link_.core.firmware.ProgramIncomplete(); },
                 [this] { List1Additem(Text(kCloseWarning)); });
}

void FirmwareFlasher::Form_Load() {
    if (!OnlyCopy())
        return;
    Text1.SetValue(u"");
    Text1.SetVisible(false);
    Command41.SetEnabled(false);
    Command1.SetEnabled(true);
    Command6.SetEnabled(true);
    DisableExtras();
    link_.core.Init();
    List1Additem(u"Tarnex Firmware 升级程序");
    List1Additem(Text(kLogRule));
    List1Additem(u"请确保Tarnex处于Ready状态");
    List1Additem(u"升级需要3分钟，升级开始后不可中断。");
    List1Additem(u"");
    SetCaption(Caption() + u"  v" + version_);
    SetVisible(true);
}

void FirmwareFlasher::List1Additem(const Text& text) {
    List1.Add(TimeText(world_.clock.Calendar()) + u":  " + text);
}

void FirmwareFlasher::Command1_Click() {
    if (Command1.Caption() == kOpen)
        ChooseFile();
    else if (Command1.Caption() == kConnect)
        Start(Connect());
    else
        Disconnect();
}

// What stands beside the three steps: there once a file was chosen, and at rest.
void FirmwareFlasher::EnableExtras() {
    OtherFile.SetEnabled(!hex_file_.empty() && !choosing_);
}

void FirmwareFlasher::DisableExtras() {
    OtherFile.SetEnabled(false);
}

void FirmwareFlasher::ChooseFile() {
    choosing_ = true;
    Command1.SetEnabled(false);
    Command41.SetEnabled(false);
    DisableExtras();
    CommonDialog_.Show(u"*.hex|*.HEX", [this](const std::string& path) { FileChosen(path); });
}

void FirmwareFlasher::FileChosen(const std::string& path) {
    choosing_ = false;
    if (!path.empty())
        TakeFile(path);
    Command1.SetEnabled(!failed_);
    Command41.SetEnabled(!failed_ && Connected());
    EnableExtras();
}

void FirmwareFlasher::TakeFile(const std::string& path) {
    hex_file_ = path;
    failed_ = failed_ && !Connected();
    List1Additem(FromUtf8(path));
    const FirmwareFile file = ReadFirmwareFile(world_.files, path);
    if (!file.Sendable())
        ListFailure(file.verdict);
    if (Command1.Caption() == kOpen)
        Command1.SetCaption(Text(kConnect));
}

Task<> FirmwareFlasher::Connect() {
    Command1.SetEnabled(false);
    DisableExtras();
    List1Additem(u"正在连接Tarnex.");
    Discovery& discovery = link_.core.discovery;
    co_await discovery.Connect(Discovery::Ports::kAll);
    discovery.ConnectClose();
    const int port = co_await discovery.Connect(Discovery::Ports::kAll);
    if (port != 0) {
        List1Additem(u"已在Com" + ToText(port) + u"成功连接Tarnex.");
        List1Additem(u"可以开始更新Firmware!");
        Command1.SetEnabled(true);
        Command41.SetEnabled(true);
        Command1.SetCaption(Text(kDisconnect));
    } else {
        List1Additem(u"无法连接Tarnex.");
        Command1.SetEnabled(true);
        Command6.SetEnabled(true);
    }
    EnableExtras();
}

void FirmwareFlasher::Disconnect() {
    Command1.SetEnabled(false);
    link_.core.discovery.ConnectClose();
    List1Additem(u"已经断开Tarnex.");
    List1Additem(Text(kLogRule));
    Command1.SetCaption(Text(kConnect));
    failed_ = false;
    Command1.SetEnabled(!choosing_);
    Command6.SetEnabled(true);
    Command41.SetEnabled(false);
    EnableExtras();
}

Task<> FirmwareFlasher::Upgrade() {
    Command1.SetEnabled(false);
    Command6.SetEnabled(false);
    Command41.SetEnabled(false);
    DisableExtras();
    const FirmwareFile file = ReadFirmwareFile(world_.files, hex_file_);
    if (!file.Sendable()) {
        EndInFailure(file.verdict);
        co_return;
    }
    TarnexCore& core = link_.core;
    co_await core.discovery.HelloTarnex(); // whatever it answers, the upgrade goes on
    const std::function<void(const Text&)> add = [this](const Text& line) { List1Additem(line); };
    co_await ListIdentity(core.commands, false, add);
    List1Additem(Text(kLogRule));
    List1Additem(u"正在升级Firmware,请等待.");
    List1Additem(u"");
    co_await core.commands.RESET_NOBACK();
    port_ = core.discovery.ConnectClose();
    GetAddrTimer.Enable();
    const bool upgraded = co_await core.firmware.FirmwareFlash(port_, hex_file_);
    if (upgraded) {
        List1Additem(u"升级成功!");
        Disconnect();
        GetAddrTimer.Disable();
        Text1.SetVisible(false);
    } else {
        EndInFailure(core.firmware.Progress());
    }
}

// The three steps are over.
void FirmwareFlasher::EndInFailure(const FlashProgress& progress) {
    List1Additem(u"升级失败!");
    ListFailure(progress);
    failed_ = true;
    Command6.SetEnabled(true);
    EnableExtras();
}

void FirmwareFlasher::ListFailure(const FlashProgress& progress) {
    const std::string command = UpdateCommand("COM" + std::to_string(port_), hex_file_);
    for (const Text& line : FailureInChinese(progress, command))
        List1Additem(line);
}

void FirmwareFlasher::Command6_Click() {
    if (link_.core.discovery.ConnectStatus() != 0)
        link_.core.discovery.ConnectClose();
    Form_Unload();
}

// A pulled adapter disconnects as the button does; the upgrade tells it in its own way.
void FirmwareFlasher::HardwareLost() {
    if (Busy())
        link_.core.discovery.ConnectClose();
    else
        Disconnect();
}

} // namespace tarnex
