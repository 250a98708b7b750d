#pragma once

#include "settings/my_ini_file.h"

namespace tarnex {

// The device record: the values that were last written into the unit, under the keys of this
// section.
inline constexpr TextView kDeviceRecord = u"TarnexComm";

// Marks every value of the device record as unknown, so that the unit gets each one again. False
// when the file cannot be written, so that the record stays as it was.
bool InvalidateUnitSettings(MyIniFile& file);

} // namespace tarnex
