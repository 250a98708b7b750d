#pragma once

#include <optional>
#include <string_view>

namespace tarnex {

enum class LoaderStep { kHandshake, kErase, kWrite, kFinish };
enum class LoaderFault {
    kRefuse,  // a frame that is no acknowledgement
    kLate,    // the right answer after 9 s
    kCorrupt, // one wrong bit in the answer
    kSilent,  // no answer
    kWrong,   // the right answer to another step
};

// What a unit's loader does wrong: once, with the nth frame of a step from now on.
struct LoaderPlan {
    LoaderStep step = LoaderStep::kHandshake;
    long nth = 1;
    LoaderFault fault = LoaderFault::kRefuse;
};

// "write:100 silent": the words of an operator, STEP or STEP:N, and a fault. Nothing for others.
std::optional<LoaderPlan> ParseLoaderPlan(std::string_view words);

} // namespace tarnex
