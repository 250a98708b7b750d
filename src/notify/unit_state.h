#pragma once

#include "platform/text.h"

#include <cstdint>

namespace tarnex {

inline constexpr TextView kNoUnitInitFlags = u"00000000000";

// What the service knows of the unit. Supervision changes it; the links and the SMS queue read it.
struct UnitState {
    bool UnitConnected = false; // the greeting was answered "OK" and the unit was not lost since
    bool UnitBusy = false;      // one handler works on the unit: the others leave it alone
    bool UnitReady = false;     // every setting is in the unit, version and serial are read
    bool UnitOnline = false;    // reported in "tx-States"
    Text UnitInitFlags{kNoUnitInitFlags}; // a "0" or "1" for each start-up step; "*" once ready
    bool DeviceRecordStale = false;       // it could not be invalidated: only the flags count
    Text UnitSignalLevel = u"1";          // "1" to "5"
    std::int16_t UnitSignalValue = 0;     // last valid reading, -1 for none
    Text UnitVersion;
    Text UnitSerial;
    // Counts how often the service began anew with the unit. A handler that waited for the unit and
    // finds another number than before leaves UnitBusy and all timers alone: they belong to the new
    // search.
    unsigned Losses = 0;
};

} // namespace tarnex
