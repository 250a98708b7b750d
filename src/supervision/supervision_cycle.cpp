#include "supervision/supervision_cycle.h"

#include "device/command_sender.h"
#include "device/unit_events.h"
#include "platform/calendar_text.h"
#include "settings/setting_table.h"

namespace tarnex {

namespace {

constexpr Duration kCheckPeriod = 5s;
constexpr Duration kFirstCheck = 10s;
constexpr int kFailedReadings = 5; // as many in a row mean that the unit is lost
constexpr std::int16_t kUnitGone = -2;

Text OnOff(const Text& value) {
    return value == u"1" ? u"On" : u"Off";
}

// A setting that is kept in the unit, and the command that writes it.
struct UnitSetting {
    const Setting& setting;
    Task<Text> (*write)(CommandSet& unit, const Text& value);
};
using Unit = CommandSet;
// clang-format off
constexpr UnitSetting kUnitSettings[] = {
    {"alarm-number-1"_setting,           [](Unit& u, const Text& v) { return u.WRNO(v, u"1"); }},
    {"alarm-number-2"_setting,           [](Unit& u, const Text& v) { return u.WRNO(v, u"2"); }},
    {"sms-centre"_setting,               [](Unit& u, const Text& v) { return u.WRCSCA(v); }},
    {"communication-alarm-time"_setting, [](Unit& u, const Text& v) { return u.WRDT(v); }},
    {"send-count"_setting,               [](Unit& u, const Text& v) { return u.WRAT(ToText(LeadingInt16(v).value_or(0))); }},
    {"communication-alarm"_setting,      [](Unit& u, const Text& v) { return u.TXCON(OnOff(v)); }},
    {"power-alarm"_setting,              [](Unit& u, const Text& v) { return u.TXPWR(OnOff(v)); }},
    {"unit-name"_setting,                [](Unit& u, const Text& v) { return u.WRName(v); }},
    {"unit-name-shown"_setting,          [](Unit& u, const Text& v) { return u.NameMode(OnOff(v)); }},
};
// clang-format on

consteval bool CoversTheTable() {
    std::size_t step = 0;
    for (const Setting& setting : kSettings)
        if (!setting.record.empty() && &setting != &kUnitSettings[step++].setting)
            return false;
    return step == std::size(kUnitSettings);
}
static_assert(CoversTheTable(), "each setting kept in the unit needs its command, in their order");

// What is read from the unit once its settings are written.
struct IdentityStep {
    Task<Text> (*read)(CommandSet& unit);
    Text UnitState::*value;
    TextView code; // under which the monitoring programs are told
};
// clang-format off
constexpr IdentityStep kIdentitySteps[] = {
    {[](Unit& u) { return u.ChkVer(); },   &UnitState::UnitVersion, u"txVersion"},
    {[](Unit& u) { return u.RDSerial(); }, &UnitState::UnitSerial,  u"tx-Serial"},
};
// clang-format on
constexpr std::size_t kSteps = std::size(kUnitSettings) + std::size(kIdentitySteps);
static_assert(kNoUnitInitFlags.size() == kSteps, "each start-up step has its flag");

// The flags when that many steps are done, in their order.
Text FlagsAfter(std::size_t steps) {
    return Text(steps, u'1') + Text(kSteps - steps, u'0');
}

// The upper bound of each signal level but the last.
constexpr std::int16_t kLevelBounds[] = {4, 10, 14, 19};

Text SignalLevel(std::int16_t value) {
    int level = 1;
    for (const std::int16_t bound : kLevelBounds)
        level += value > bound;
    return ToText(level);
}

} // namespace

SupervisionCycle::SupervisionCycle(Parts parts)
    : mCheckTimer(parts.clock, kCheckPeriod, [this] { return mCheckTimer_Timer(); }),
      parts_(std::move(parts)) {}

void SupervisionCycle::Reset() {
    mCheckTimer.Reset(kFirstCheck);
    parts_.unit.UnitSignalLevel = u"1";
    parts_.unit.UnitSignalValue = 0;
    failed_readings_ = 0;
}

Task<> SupervisionCycle::mCheckTimer_Timer() {
    if (!parts_.unit.UnitConnected)
        co_return;
    const UnitGuard guard(parts_.unit);
    if (!guard.Taken())
        co_return;
    mCheckTimer.Disable();
    co_await RunSteps(guard);
    if (!guard.Lost())
        mCheckTimer.Enable();
}

Task<> SupervisionCycle::RunSteps(const UnitGuard& guard) {
    PassStateWord();
    if (guard.Lost())
        co_return;
    TakeReceivedSMS();
    parts_.take_number_switches();
    const bool written = co_await WriteSettings(guard);
    if (!written)
        co_return;
    co_await ReadIdentity(guard);
    if (guard.Lost())
        co_return;
    if (parts_.unit.UnitInitFlags == FlagsAfter(kSteps))
        DeclareReady();
    parts_.lists.Count(Total::kTicks);
    co_await ReadSignal(guard);
}

void SupervisionCycle::PassStateWord() {
    const Text word = parts_.core.GetComFifo();
    if (word == kNoData)
        return;
    const Text code(CodeOfState(word));
    if (code.empty()) { // the unit has restarted
        parts_.set_to_research(UnitLoss::kRestarted);
        return;
    }
    parts_.main_job.Said(word);
    parts_.link.SendToMonitors(code);
    parts_.lists.mList3Additem(code);
}

void SupervisionCycle::TakeReceivedSMS() {
    SMSModem& sms = parts_.core.sms;
    if (sms.GetSMS() != u"NewMsg")
        return;
    const Text sender = sms.GetSMSTelNo();
    const Text text = sms.GetSMSMsg();
    parts_.lists.mList2Additem(u"查询时间:" + TimeText(parts_.clock.Calendar()));
    parts_.lists.mList2Additem(u"号码:" + sender);
    parts_.lists.mList2Additem(u"日期:" + sms.GetSMSDate());
    parts_.lists.mList2Additem(u"时间:" + sms.GetSMSTime());
    parts_.lists.mList2Additem(u"内容:" + text);
    parts_.lists.mList2Additem(u"");
    const Text answer = parts_.codec.DecodeSMSCommand(sender, text);
    parts_.lists.mList1Additem(u"确认消息:" + answer);
    if (!StartsWith(answer, u"ETel")) {
        AnswerCommand(answer);
        return;
    }
    if (parts_.codec.IsCommand(text))
        parts_.main_job.CommandRefused(sender);
    if ((Contains(text, u"费") && parts_.settings.ForwardFeeSMS) || Contains(text, u"额"))
        ForwardFee(sender, text);
}

// answer: a four-character code, the recipient and the reply's text.
void SupervisionCycle::AnswerCommand(const Text& answer) {
    const Text code = answer.substr(0, 4);
    parts_.queue.QueueSMS(answer.substr(4));
    parts_.log.WriteCtrlLog(code);
    parts_.log.WriteResponseLog(answer.substr(5));
    if (code != u"ECmd")
        parts_.link.SendToMonitors(u"txControl" + code);
}

void SupervisionCycle::ForwardFee(const Text& sender, const Text& text) {
    const Text header = u"Tarnex转发来自号码" + sender + u"的短消息，该条信息可能涉及缴费等信息。";
    for (const TextView recipient : {u"1", u"2"})
        for (const Text& part : {header, text}) {
            parts_.queue.QueueSMS(Text(recipient) + part);
            parts_.log.WriteResponseLog(part);
        }
}

Task<bool> SupervisionCycle::WriteSettings(const UnitGuard& guard) {
    for (std::size_t step = 0; step < std::size(kUnitSettings); ++step) {
        const UnitSetting& row = kUnitSettings[step];
        const Text wanted = parts_.ini.GetIniStr(row.setting);
        const bool record_counts =
            !parts_.unit.DeviceRecordStale || parts_.unit.UnitInitFlags[step] == u'1';
        if (record_counts && wanted == parts_.ini.GetIniStr(kDeviceRecord, row.setting.record))
            continue;
        const Text reply = co_await row.write(parts_.core.commands, wanted);
        if (guard.Lost())
            co_return false;
        if (reply != kOk) {
            parts_.main_job.SettingRefused(row.setting.name, reply);
            co_return false;
        }
        parts_.ini.WriteIniStr(kDeviceRecord, row.setting.record, wanted);
        parts_.unit.UnitInitFlags[step] = u'1';
    }
    co_return true;
}

Task<> SupervisionCycle::ReadIdentity(const UnitGuard& guard) {
    for (std::size_t i = 0; i < std::size(kIdentitySteps); ++i) {
        const IdentityStep& step = kIdentitySteps[i];
        const std::size_t flag = std::size(kUnitSettings) + i;
        if (parts_.unit.UnitInitFlags != FlagsAfter(flag))
            continue;
        const Text reply = co_await step.read(parts_.core.commands);
        if (guard.Lost())
            co_return;
        if (reply == kFailed)
            continue;
        parts_.unit.*step.value = reply;
        parts_.link.SendToMonitors(Text(step.code) + reply);
        parts_.unit.UnitInitFlags[flag] = u'1';
    }
}

void SupervisionCycle::DeclareReady() {
    parts_.queue.mSMSSendTimer.Enable();
    parts_.lists.mList1Additem(u"Tarnex就绪");
    parts_.unit.UnitReady = true;
    parts_.main_job.Ready();
    parts_.lists.ShowUnit(u"硬件状态:就绪");
    parts_.link.SendToMonitors(u"tx--Ready");
    parts_.unit.UnitOnline = true;
    parts_.unit.UnitInitFlags += u'*'; // so that this step runs once
}

Task<> SupervisionCycle::ReadSignal(const UnitGuard& guard) {
    const Text reading = co_await parts_.core.commands.RDCSQ();
    if (guard.Lost())
        co_return;
    JudgeReading(LeadingInt16(reading).value_or(0));
    if (parts_.unit.UnitSignalValue != -1) {
        parts_.unit.UnitSignalLevel = SignalLevel(parts_.unit.UnitSignalValue);
        parts_.lists.ShowSignal(parts_.unit.UnitSignalValue);
        parts_.main_job.Signal(parts_.unit.UnitSignalValue);
        co_return;
    }
    parts_.unit.UnitSignalLevel = u"1";
    parts_.lists.mList1Additem(u"开始丢失拉");
    parts_.set_to_research(UnitLoss::kSilent);
}

void SupervisionCycle::JudgeReading(std::int16_t reading) {
    if (reading >= 0) {
        failed_readings_ = 0;
        parts_.unit.UnitSignalValue = reading;
    } else if (reading == kUnitGone || ++failed_readings_ == kFailedReadings) {
        parts_.unit.UnitSignalValue = -1; // the unit is lost, and the count begins anew with Reset
    }
}

} // namespace tarnex
