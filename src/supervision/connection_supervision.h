#pragma once

#include "device/tarnex_core.h"
#include "logging/main_job_notices.h"
#include "notify/control_link.h"
#include "notify/unit_state.h"
#include "settings/settings.h"

namespace tarnex {

// Finds the unit and greets it, and begins anew when it is lost.
//
//   searching --port found--> found --"INIT"--> booting --"OK"--> connected --loss--> searching
//                               |                                     (SetToResearch)
//                               +--no greeting--> searching
//
// While the unit is connected the supervision cycle polls it; exactly one of mAutoConnect and
// mCheckTimer runs at a time.
class ConnectionSupervision {
  public:
    struct Parts {
        Clock& clock;
        TarnexCore& core;
        MyIniFile& ini;
        const Settings& settings;
        UnitState& unit;
        DebugLists& lists;
        ControlLink& link;
        MainJobNotices& main_job;
        Timer& mCheckTimer;
        // ResetUnitState of the service: forgets what is known of the unit, and stops mCheckTimer.
        std::function<void()> reset_unit_state;
    };
    // The parts must outlive the supervision.
    explicit ConnectionSupervision(Parts parts);

    // Drops a unit that was lost and starts the search again. Never waits.
    void SetToResearch(UnitLoss why);

    // 5 s; the first tick of a search comes 15 s after ResetUnitState.
    Timer mAutoConnect;

  private:
    Task<> mAutoConnect_Timer();
    Task<> Greet(const UnitGuard& guard);
    Task<> Search();
    void TryAgain();

    Parts parts_;
};

} // namespace tarnex
