#include "tools/firmware_flasher.h"

#include "device/flash_report.h"
#include "platform/calendar_text.h"
#include "tools/update_progress.h"

namespace tarnex {

namespace {

constexpr Duration kAddressPeriod = 100ms;
constexpr TextView kOpen = u"打　开";
constexpr TextView kConnect = u"连　接";
constexpr TextView kDisconnect = u"断　开";

} // namespace

FirmwareFlasher::FirmwareFlasher(const ToolWorld& world, FileDialog& dialog, Text version)
    : ToolForm("FirmwareFlasher", u"(c)Firmware Flasher", world),
      GetAddrTimer(world.clock, kAddressPeriod, [this] { Follow(); }), CommonDialog_(dialog),
      version_(std::move(version)), link_(world, [this] { HardwareLost(); }),
      update_(world_, link_.core, *this) {
    timers_.Add(GetAddrTimer);
    Command1.OnClick([this] { Command1_Click(); });
    Command41.OnClick([this] { Start(Upgrade()); });
    OtherFile.OnClick([this] { ChooseFile(); });
    Rescue.OnClick([this] { Start(CallLoader()); });
    Command6.OnClick([this] { Command6_Click(); });
    AskBeforeEnd([this] { return update_.MustNotEnd(); },
                 [this] { List1Additem(Text(kCloseWarning)); });
}

void FirmwareFlasher::Form_Load() {
    if (!OnlyCopy())
        return;
    Text1.SetValue(u"");
    ShowFigures(false);
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

void FirmwareFlasher::ShowFigures(bool visible) {
    Figures.SetCaption(u"");
    Text1.SetVisible(visible);
    Figures.SetVisible(visible);
}

void FirmwareFlasher::Follow() {
    const FlashProgress& progress = link_.core.firmware.Progress(); // also of the last update
    Text1.SetValue(progress.address);
    if (progress.fault != FlashFault::kNone)
        Figures.SetCaption(u""); // nothing is to come; the address tells where it broke off
    else if (progress.step == FlashStep::kWrite)
        Figures.SetCaption(
            FiguresInChinese(progress, update_.File().summary.Bytes(), update_.StepTime()));
}

// As far as the three steps have come.
void FirmwareFlasher::EnableSteps() {
    Command1.SetEnabled(!failed_);
    Command41.SetEnabled(!failed_ && Connected());
    Command6.SetEnabled(true);
}

// What stands beside the three steps: there once a file was chosen, and at rest.
void FirmwareFlasher::EnableExtras() {
    const bool possible = !update_.File().path.empty() && !choosing_;
    OtherFile.SetEnabled(possible);
    Rescue.SetEnabled(possible && !Connected());
}

void FirmwareFlasher::DisableAll() {
    for (Button* step : {&Command1, &Command41, &Command6})
        step->SetEnabled(false);
    DisableExtras();
}

void FirmwareFlasher::DisableExtras() {
    OtherFile.SetEnabled(false);
    Rescue.SetEnabled(false);
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
    EnableSteps();
    EnableExtras();
}

void FirmwareFlasher::TakeFile(const std::string& path) {
    failed_ = failed_ && !Connected();
    List1Additem(FromUtf8(path));
    if (!update_.Judge(path))
        ListFailure();
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
    if (port != 0)
        ListConnected(port);
    else
        List1Additem(u"无法连接Tarnex.");
    EnableSteps();
    EnableExtras();
}

void FirmwareFlasher::ListConnected(int port) {
    port_ = port;
    failed_ = false;
    List1Additem(u"已在Com" + ToText(port) + u"成功连接Tarnex.");
    List1Additem(u"可以开始更新Firmware!");
    Command1.SetCaption(Text(kDisconnect));
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

// The file is read once more: it may have changed since it was chosen.
Task<> FirmwareFlasher::Upgrade() {
    DisableAll();
    UpdateEnd end = UpdateEnd::kFailed;
    if (update_.Judge(update_.File().path))
        end = co_await update_.Write();
    if (end == UpdateEnd::kDone)
        EndInSuccess();
    else
        EndInFailure();
}

Task<bool> FirmwareFlasher::UnitAnswers() {
    TarnexCore& core = link_.core;
    co_await core.discovery.HelloTarnex(); // whatever it answers, the upgrade goes on
    const std::function<void(const Text&)> add = [this](const Text& line) { List1Additem(line); };
    co_await ListIdentity(core.commands, false, add);
    List1Additem(Text(kLogRule));
    List1Additem(u"正在升级Firmware,请等待.");
    List1Additem(u"");
    co_return true;
}

void FirmwareFlasher::StepBegan(const Text& line) {
    List1Additem(line);
    if (update_.Standing().step == FlashStep::kWrite)
        ShowFigures(true);
}

void FirmwareFlasher::EndInSuccess() {
    List1Additem(u"升级成功!");
    Disconnect();
    GetAddrTimer.Disable();
    ShowFigures(false);
}

// The three steps are over.
void FirmwareFlasher::EndInFailure() {
    failed_ = true;
    List1Additem(u"升级失败!");
    ListFailure();
    EnableSteps();
    EnableExtras();
}

// A unit whose update broke off answers no greeting, only its loader does. It is called where the
// unit was last and nowhere else, since other devices would not know what to make of it. A unit
// that answers after all is connected.
Task<> FirmwareFlasher::CallLoader() {
    DisableAll();
    const bool sendable = update_.Judge(update_.File().path);
    if (port_ == 0)
        port_ = link_.core.discovery.LastPort();
    if (!sendable) {
        ListFailure();
    } else if (port_ == 0) {
        List1Additem(u"不知道设备在哪个串口，请用命令指定：" +
                     FromUtf8(UpdateCommand("COM1", update_.File().path, world_.words.quote)));
    } else {
        const Text device = FromUtf8(world_.serial_ports.DeviceName(port_));
        List1Additem(u"正在呼叫设备：Com" + ToText(port_) + u" " + device);
        const int found = co_await link_.core.discovery.ConnectTo(port_);
        if (found != 0) {
            ListConnected(port_);
        } else {
            List1Additem(u"设备没有应答，改为呼叫它的升级程序。请将设备断电后重新上电。");
            const UpdateEnd end = co_await update_.Write(port_);
            if (end == UpdateEnd::kDone)
                EndInSuccess();
            else
                ListFailure();
        }
    }
    EnableSteps();
    EnableExtras();
}

void FirmwareFlasher::ListFailure() {
    const FlashProgress& progress = update_.Standing();
    const std::string command =
        UpdateCommand("COM" + std::to_string(port_), update_.File().path, world_.words.quote);
    for (const Text& line : FailureInChinese(progress, command))
        List1Additem(line);
    if (ProgramTouched(progress))
        List1Additem(u"也可以按“恢　复”再次写入。");
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
