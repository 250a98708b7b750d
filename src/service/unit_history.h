#pragma once

#include "history/message_ledger.h"
#include "notify/unit_state.h"
#include "settings/settings.h"

namespace tarnex {

// Notes in the history when the unit is found, ready or lost, how its signal was, and that messages
// wait.
class UnitHistory {
  public:
    // All must outlive it.
    UnitHistory(Clock& clock, const UnitState& unit, const Settings& settings,
                MessageLedger& ledger)
        : clock_(clock), unit_(unit), settings_(settings), ledger_(ledger) {}

    // To be called whenever the loop is about to sleep: it takes no time while nothing changes.
    void Look();

  private:
    Clock& clock_;
    const UnitState& unit_;
    const Settings& settings_;
    MessageLedger& ledger_;
    const char* state_ = "";
    Duration state_since_{};
    Duration next_signal_{};
    Duration next_sign_{};
};

} // namespace tarnex
