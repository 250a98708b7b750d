#pragma once

#include "events/event_record.h"
#include "operator/settings_file.h"

#include <vector>

namespace tarnex {

// What happens on one way that a notification can take.
struct WayExplanation {
    bool taken = false;
    std::vector<std::string> reasons; // for it, or each thing that stands in the way
};

// What the service does with an event record at one moment, by the rules that it uses itself.
struct RecordExplanation {
    EventRecord event;
    Text text;
    std::vector<Text> pieces;
    bool quiet = false;
    std::string quiet_reason; // why it is quiet or not
    struct Sms : WayExplanation {
        int recipient; // 1 or 2
        Text number;
    };
    std::vector<Sms> sms;   // for both numbers
    int times = 0;          // how often the pieces are queued for each number
    std::size_t queued = 0; // SMS in all
    WayExplanation mail;
    WayExplanation log;
    std::vector<std::string> gates; // why the service would not run at all
};

RecordExplanation Explain(const SettingsFile& file, TextView record, const CalendarTime& at);

} // namespace tarnex
