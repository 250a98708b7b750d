#pragma once

#include "platform/text.h"

#include <array>
#include <cstdint>

namespace tarnex {

// The settings as the last load left them.
struct Settings {
    bool ForwardFeeSMS = false;        // strangers' messages about fees are forwarded
    Text LogPath;                      // of the log database; empty: none
    std::int16_t SendCount = 0;        // times each notification is queued for SMS
    Text NotifyMode;                   // "SMS", "Email" or "S+E": how link events go out
    bool SMSNotifyOn = false;          // link events may go out by SMS
    bool EmailNotifyOn = false;        // link events may go out by mail
    bool AutoSearchOff = false;        // the device link is switched off
    bool SwitchCheck42 = false;        // notifications go to the first number
    bool SwitchCheck43 = false;        // notifications go to the second number
    bool QuietTimeOn = false;          // the weekly SMS quiet time is in force
    std::array<bool, 7> QuietDay{};    // 0 Sunday to 6 Saturday
    std::array<Text, 14> QuietTimes{}; // start (2d) and end (2d + 1) of weekday d
    std::array<bool, 5> LinkEnabled{}; // link i may be sent to, if link 0 may
};

} // namespace tarnex
