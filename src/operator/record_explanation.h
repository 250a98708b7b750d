#pragma once

#include "events/notification_plan.h"
#include "operator/settings_file.h"

#include <vector>

namespace tarnex {

// What happens on one way that a notification can take.
struct WayExplanation {
    bool taken = false;
    std::vector<std::string> reasons; // for it, or each thing that stands in the way
};

// What the service does with an event record at one moment, and why.
struct RecordExplanation {
    NotificationPlan plan;
    std::string quiet_reason; // why it is quiet or not
    struct Sms : WayExplanation {
        int recipient; // 1 or 2
        Text number;
    };
    std::vector<Sms> sms; // for both numbers
    int send_count = 0;   // how often the settings want the pieces queued for each number
    WayExplanation mail;
    WayExplanation log;
    std::vector<std::string> gates; // why the service would not run at all
};

// What keeps the notification from a number, in the names of the settings.
std::vector<std::string> HeldBackWords(const NotificationPlan::Number& number);

RecordExplanation Explain(const SettingsFile& file, TextView record, const CalendarTime& at);

} // namespace tarnex
