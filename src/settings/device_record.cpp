#include "settings/device_record.h"

namespace tarnex {

namespace {

constexpr TextView kKeys[] = {
    u"TelNo1",          u"TelNo2",          u"SMSCenter",  u"CommAlarmTime", u"SendTimes",
    u"CommAlarmEnable", u"PowrAlarmEnable", u"TarnexName", u"NameEnable",
};
constexpr TextView kUnknown = u"@v@";

} // namespace

bool InvalidateUnitSettings(MyIniFile& file) {
    return file.WriteIniStr(kDeviceRecord, kKeys, kUnknown) && !file.LastWriteFailed();
}

} // namespace tarnex
