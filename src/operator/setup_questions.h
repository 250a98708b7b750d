#pragma once

#include "operator/operator_world.h"
#include "settings/setting_table.h"

#include <map>
#include <span>

namespace tarnex {

// What answers a question that asks for nothing needed.
inline constexpr const char* kNone = "none";

// What setup asks. Each question has a flag of its name.
struct SetupQuestion {
    const char* name;
    const char* prompt;     // begins what PromptOf gives
    const Setting* setting; // that takes the answer, which must fit it; nullptr for none
    // What Enter alone answers; "": nothing does; "=name": the answer to that one. Where nobody is
    // there to ask, a switch may stay without an answer: it is as in the sample.
    const char* default_value;
    bool none_allowed;   // kNone is an answer
    bool secret;         // typed without an echo; the flag, + "-file", names a file
    const char* only_if; // asked if the answer to that question is not kNone; "" for always
};

std::span<const SetupQuestion> SetupQuestions();
// What it says to people.
std::string PromptOf(const SetupQuestion& question, const SystemWords& words);
// The flag of a question: "--number-1".
std::string FlagOf(const SetupQuestion& question);

using SetupAnswers = std::map<std::string, std::string>; // by question

// Checks the given answers (by name; of a secret one the file) and asks for the others. Throws
// Failure when one cannot be, or is missing and nobody is there to ask.
SetupAnswers AskQuestions(const OperatorWorld& world, const SetupAnswers& given);

// The number of the port that an answer to "port" names, and the device to be put behind it; 0 for
// "search"; nothing when it names none. defaults: the devices of the ports.
struct PortAnswer {
    int number = 0;
    std::string device; // "" for the default one
};
std::optional<PortAnswer> ParsePort(const std::string& answer, const SerialPaths& defaults);

} // namespace tarnex
