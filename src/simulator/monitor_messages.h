#pragma once

#include "platform/text.h"

#include <optional>
#include <span>

namespace tarnex {

// A number of the event vocabulary with the word that an operator types and what it means.
struct EventWord {
    int number;
    std::string_view word;
    std::string_view meaning;
};

std::span<const EventWord> EventServices();
std::span<const EventWord> EventStates();
std::span<const EventWord> EventActions(); // what the monitoring program does about it

// The number of a word of the table, or the decimal number that text is, 0 to 99, in the table or
// not; nothing for any other text.
std::optional<int> NumberOf(std::span<const EventWord> words, std::string_view text);

// What a monitoring program reports.
struct MonitorEvent {
    int machine = 1; // 0 to 9
    int service = 0; // 0 to 99
    int state = 0;   // 0 to 9
    int action = 0;  // 0 to 9
    bool by_sms = true;
    bool by_mail = true;
    Text machine_name{}; // may be empty
    Text memo{};         // may be empty
};

// Service 3, abnormal, by SMS, on machine 1 "srv" with the memo "98%": 1031010srv{[b^k^]}98%
Text MakeEventRecord(const MonitorEvent& event);
// The message of the control link that carries the record.
Text MakeEventMessage(const MonitorEvent& event);
// "machine 1, CPU load: abnormal; action: nothing; by SMS, not by mail"
std::string DescribeEvent(const MonitorEvent& event);

// What a message of the control link, in either direction, tells in plain English; "unknown code"
// for what is none.
std::string DescribeCode(TextView message);

} // namespace tarnex
