#include "service/unit_history.h"

namespace tarnex {

namespace {

constexpr Duration kPeriod = 10min;
constexpr Duration kIsRead = 1min; // before its first reading the signal is 0

const char* StateOf(const UnitState& unit, const Settings& settings) {
    if (unit.UnitReady)
        return "ready";
    if (unit.UnitConnected)
        return "found";
    return settings.AutoSearchOff ? "off" : "searching";
}

} // namespace

void UnitHistory::Look() {
    const char* const state = StateOf(unit_, settings_);
    if (std::string_view(state) != state_) {
        state_ = state;
        state_since_ = clock_.Now();
        ledger_.Note("unit", state);
    }
    const bool read = unit_.UnitSignalValue > 0 ||
                      (unit_.UnitSignalValue == 0 && clock_.Now() - state_since_ >= kIsRead);
    if (unit_.UnitReady && read && clock_.Now() >= next_signal_) {
        next_signal_ = clock_.Now() + kPeriod;
        ledger_.Note("signal", std::to_string(unit_.UnitSignalValue));
    }
    if (clock_.Now() >= next_sign_) {
        next_sign_ = clock_.Now() + kPeriod;
        ledger_.StillWaiting();
    }
}

} // namespace tarnex
