#pragma once

#include "operator/settings_file.h"
#include "simulator/monitor_messages.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace tarnex {

// One thing that a monitoring program reports.
struct PlannedAlarm {
    Duration at; // since the beginning
    MonitorEvent event;
};

// Plausible alarms of one machine over some days, in the order of time: each kind of trouble comes
// as often as its kind does, at any hour, and most troubles end with a report that all is well.
// The same seed gives the same alarms.
std::vector<PlannedAlarm> PlanAlarms(int days, std::uint64_t seed);

// What became of one alarm.
struct AlarmOutcome {
    CalendarTime at;
    Text text;
    std::vector<std::string> held_back; // why no SMS was queued; empty when some were
    std::size_t sms_queued = 0;
    std::size_t sms_sent = 0;
    Duration wait{}; // until the last SMS was sent
    bool mail_queued = false;
    bool mail_sent = false;
};

struct DryRunResult {
    std::vector<AlarmOutcome> alarms;
    std::size_t other_sms = 0; // about the monitoring program
    std::size_t mails = 0;     // that were sent, others included
    std::size_t log_rows = 0;
    std::vector<std::string> said; // what the service would tell an operator, each once
    bool ended = false;            // the service ended at once: the settings do not let it run
};

// Runs the real service with these settings, a healthy unit, one monitoring program that sends the
// alarms, and a mail server that takes every mail, on simulated time. progress is told the day,
// from 1, as each one begins.
DryRunResult RunDry(const SettingsFile& file, const CalendarTime& start, int days,
                    const std::vector<PlannedAlarm>& alarms,
                    const std::function<void(int day)>& progress);

} // namespace tarnex
