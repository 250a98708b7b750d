#include "supervision/connection_supervision.h"

#include "device/command_sender.h"
#include "settings/setting_table.h"

namespace tarnex {

namespace {

constexpr Duration kSearchPeriod = 5s;
constexpr TextView kUnknown = u"@v@";

// Marks every value of the device record as unknown, so that the unit gets each one again. False
// when the file cannot be written, so that the record stays as it was.
bool InvalidateUnitSettings(MyIniFile& file) {
    std::vector<TextView> keys;
    for (const Setting& setting : kSettings)
        if (!setting.record.empty())
            keys.push_back(setting.record);
    return file.WriteIniStr(kDeviceRecord, keys, kUnknown) && !file.LastWriteFailed();
}

} // namespace

ConnectionSupervision::ConnectionSupervision(Parts parts)
    : mAutoConnect(parts.clock, kSearchPeriod, [this] { return mAutoConnect_Timer(); }),
      parts_(std::move(parts)) {}

Task<> ConnectionSupervision::mAutoConnect_Timer() {
    if (parts_.settings.AutoSearchOff)
        co_return;
    const UnitGuard guard(parts_.unit);
    if (!guard.Taken())
        co_return;
    mAutoConnect.Disable();
    if (parts_.core.discovery.ConnectStatus() != 0)
        co_await Greet(guard);
    else
        co_await Search();
}

Task<> ConnectionSupervision::Greet(const UnitGuard& guard) {
    const Text reply = co_await parts_.core.discovery.HelloTarnex();
    if (guard.Lost())
        co_return;
    if (reply == kOk) {
        parts_.unit.DeviceRecordStale = !InvalidateUnitSettings(parts_.ini);
        parts_.unit.UnitConnected = true;
        parts_.mCheckTimer.Enable();
        co_return;
    }
    if (reply == u"INIT") {
        parts_.lists.ShowUnit(u"硬件状态:启动中");
        parts_.link.SendToMonitors(u"txBooting");
        parts_.main_job.StartingUp();
    } else {
        parts_.core.discovery.ConnectClose();
    }
    TryAgain();
}

// The unit cannot be lost meanwhile: hardware that goes away only fails the port that is tried.
Task<> ConnectionSupervision::Search() {
    parts_.link.SendToMonitors(u"tx-NoConn");
    parts_.lists.mList1Additem(u"开始寻找 Tarnex");
    parts_.ini.WriteIniStr("unit-port"_setting, u"*");
    int port = co_await parts_.core.discovery.Connect(Discovery::Ports::kLast);
    if (port == 0)
        port = co_await parts_.core.discovery.Connect(Discovery::Ports::kAll);
    if (port != 0) {
        const Text number = ToText(port);
        parts_.lists.mList1Additem(u"在 com" + number + u" 找到 Tarnex");
        parts_.ini.WriteIniStr("unit-port"_setting, u"Com" + number);
        parts_.ini.WriteIniStr("last-port"_setting, number);
    } else {
        parts_.lists.mList1Additem(u"没找到 Tarnex");
        parts_.main_job.NotFound();
    }
    TryAgain();
}

void ConnectionSupervision::TryAgain() {
    parts_.unit.UnitConnected = false;
    mAutoConnect.Enable();
}

void ConnectionSupervision::SetToResearch(UnitLoss why) {
    parts_.main_job.Lost(why);
    parts_.lists.ShowUnit(u"硬件状态:丢失");
    parts_.link.SendToMonitors(u"txNexLost");
    parts_.lists.mList1Additem(u"Tarnex硬件丢失,重新开始寻找!");
    parts_.lists.Count(Total::kUnitLosses);
    parts_.reset_unit_state();
    mAutoConnect.Enable();
    parts_.core.discovery.ConnectClose();
}

} // namespace tarnex
