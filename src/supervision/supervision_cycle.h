#pragma once

#include "device/tarnex_core.h"
#include "logging/log_writer.h"
#include "logging/main_job_notices.h"
#include "notify/control_link.h"
#include "notify/sms_msg_codec.h"
#include "notify/sms_queue.h"
#include "notify/unit_state.h"
#include "settings/settings.h"

namespace tarnex {

// What is done with a connected unit every 5 s: passes on what it reports, answers received SMS,
// keeps the configured settings in it, declares it ready, and watches its signal.
class SupervisionCycle {
  public:
    struct Parts {
        Clock& clock;
        TarnexCore& core;
        MyIniFile& ini;
        const Settings& settings;
        UnitState& unit;
        DebugLists& lists;
        LogWriter& log;
        MainJobNotices& main_job;
        ControlLink& link;
        SMSMsgCodec& codec;
        SMSQueue& queue;
        std::function<void()> take_number_switches; // whom notifications go to, from the file
        std::function<void(UnitLoss why)> set_to_research;
    };
    // The parts must outlive the cycle.
    explicit SupervisionCycle(Parts parts);

    // The state after ResetUnitState: mCheckTimer off, its next first tick 10 s after it is
    // enabled, nothing known of the signal.
    void Reset();

    // 5 s; enabled when the unit was greeted.
    Timer mCheckTimer;

  private:
    Task<> mCheckTimer_Timer();
    Task<> RunSteps(const UnitGuard& guard);
    void PassStateWord();
    void TakeReceivedSMS();
    void AnswerCommand(const Text& answer);
    void ForwardFee(const Text& sender, const Text& text);
    // False when one is not in the unit yet: the rest waits for the next tick.
    Task<bool> WriteSettings(const UnitGuard& guard);
    Task<> ReadIdentity(const UnitGuard& guard);
    void DeclareReady();
    Task<> ReadSignal(const UnitGuard& guard);
    // A valid reading (0 or more) becomes the signal value. The fifth failed one in a row makes the
    // value -1, and so does the first that says the hardware is gone (-2).
    void JudgeReading(std::int16_t reading);

    Parts parts_;
    int failed_readings_ = 0; // in a row
};

} // namespace tarnex
