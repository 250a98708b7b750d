#include "simulator/unit_command_table.h"

namespace tarnex {

namespace {

using enum UnitAction;
using M = UnitMemory;

// clang-format off
constexpr UnitCommand kCommands[] = {
    // name          argument  action         field                text
    {"RDCSQ",        false,    kReportSignal, nullptr,             ""},
    {"Hello,tarnex", false,    kGreet,        nullptr,             ""},
    {"LCD1",         true,     kStore,        &M::Lcd1,            ""},
    {"LCD2",         true,     kStore,        &M::Lcd2,            ""},
    {"LCDFree",      false,    kFreeDisplay,  nullptr,             ""},
    {"RDALARM",      false,    kTell,         &M::AlarmState,      "ALARM("},
    {"PCAlarm",      true,     kStore,        &M::PcAlarm,         ""},
    {"PCAlarmOff",   false,    kSet,          &M::PcAlarm,         ""},
    {"ChkVer",       false,    kTell,         &M::Version,         ""},
    {"RDNO1",        false,    kTell,         &M::Number1,         "NO1("},
    {"RDNO2",        false,    kTell,         &M::Number2,         "NO2("},
    {"WRNO1",        true,     kStore,        &M::Number1,         ""},
    {"WRNO2",        true,     kStore,        &M::Number2,         ""},
    {"WRDT",         true,     kStore,        &M::AlarmTime,       ""},
    {"RDDT",         false,    kTell,         &M::AlarmTime,       "DT("},
    {"WRAT",         true,     kStore,        &M::SendTimes,       ""},
    {"RDAT",         false,    kTell,         &M::SendTimes,       "AT("},
    {"TXPWRON",      false,    kSet,          &M::PowerAlarm,      "1"},
    {"TXPWROFF",     false,    kSet,          &M::PowerAlarm,      "0"},
    {"TXCONON",      false,    kSet,          &M::ConnectionAlarm, "1"},
    {"TXCONOFF",     false,    kSet,          &M::ConnectionAlarm, "0"},
    {"WRCSCA",       true,     kStore,        &M::SmsCentre,       ""},
    {"RDCSCA",       false,    kTell,         &M::SmsCentre,       "TXCSCA("},
    {"RESET",        false,    kReset,        nullptr,             ""},
    {"WRName",       true,     kStore,        &M::Name,            ""},
    {"RDName",       false,    kTell,         &M::Name,            "Name("},
    {"EnName",       false,    kSet,          &M::NameMode,        "1"},
    {"DisName",      false,    kSet,          &M::NameMode,        "0"},
    {"RDNAMESt",     false,    kTell,         &M::NameMode,        "NameSt("},
    {"RDSerial",     false,    kTell,         &M::Serial,          "Serial("},
    {"QorvexWsr",    true,     kStore,        &M::Serial,          ""},
    {"SENDSMS1",     true,     kSendSms,      &M::Number1,         ""},
    {"SENDSMS2",     true,     kSendSms,      &M::Number2,         ""},
};
// clang-format on

} // namespace

std::span<const UnitCommand> UnitCommands() {
    return kCommands;
}

} // namespace tarnex
