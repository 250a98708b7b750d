#pragma once

#include "platform/text.h"

#include <cstdint>

namespace tarnex {

inline constexpr TextView kNoUnitInitFlags = u"00000000000";

// What the service knows of the unit. Supervision changes it; the links and the SMS queue read it.
class UnitState {
  public:
    bool UnitConnected = false; // the greeting was answered "OK" and the unit was not lost since
    bool UnitReady = false;     // every setting is in the unit, version and serial are read
    bool UnitOnline = false;    // reported in "tx-States"
    Text UnitInitFlags{kNoUnitInitFlags}; // a "0" or "1" for each start-up step; "*" once ready
    bool DeviceRecordStale = false;       // it could not be invalidated: only the flags count
    Text UnitSignalLevel = u"1";          // "1" to "5"
    std::int16_t UnitSignalValue = 0;     // last valid reading, -1 for none
    Text UnitVersion;
    Text UnitSerial;

    // One handler works on the unit: the others leave it alone.
    bool UnitBusy() const { return UnitBusy_; }
    // How often the service began anew with the unit, its start included.
    unsigned Losses() const { return Losses_; }
    // The unit was lost, or the service starts. Every UnitGuard of before is Lost(), and another
    // handler may take the unit.
    void BeginAnew() {
        ++Losses_;
        UnitBusy_ = false;
        UnitConnected = false;
        UnitReady = false;
        UnitOnline = false;
        UnitInitFlags = kNoUnitInitFlags;
    }

  private:
    friend class UnitGuard;
    bool UnitBusy_ = false;
    unsigned Losses_ = 0;
};

// One handler's hold on the unit. A handler that waits for the unit has one in its frame: it lets
// go on every way out, also when the handler's Task is destroyed half-way.
class UnitGuard {
  public:
    // Takes the unit unless another handler has it. The state must outlive the guard.
    explicit UnitGuard(UnitState& unit)
        : unit_(unit), taken_(!unit.UnitBusy_), losses_(unit.Losses_) {
        unit.UnitBusy_ = true;
    }
    UnitGuard(const UnitGuard&) = delete;
    UnitGuard& operator=(const UnitGuard&) = delete;
    ~UnitGuard() {
        if (taken_ && !Lost())
            unit_.UnitBusy_ = false;
    }

    // False: another handler has the unit, so this one leaves it alone.
    bool Taken() const { return taken_; }
    // The service began anew with the unit meanwhile. To be asked after every wait: the unit and
    // all timers belong to the new search then, and the handler returns without touching them.
    bool Lost() const { return unit_.Losses_ != losses_; }

  private:
    UnitState& unit_;
    const bool taken_;
    const unsigned losses_;
};

} // namespace tarnex
