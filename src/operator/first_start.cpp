#include "operator/first_start.h"

#include "operator/commands.h"
#include "operator/status_reading.h"
#include "operator/text_output.h"

#include <ostream>

namespace tarnex {

namespace {

constexpr int kTestSeconds = 300;
constexpr Duration kStartCheckPause = 1s;
constexpr Duration kStartLimit = 10s;

// False as well when nobody answers.
bool Agreed(const OperatorWorld& world, const std::string& question) {
    world.out.flush();
    while (const auto line = world.ask(question + ", yes or no [yes]: ", false)) {
        if (line->empty() || *line == "yes" || *line == "y")
            return true;
        if (*line == "no" || *line == "n")
            return false;
    }
    return false;
}

bool Runs(const OperatorWorld& world) {
    try {
        return ReadStatusFile(world).running;
    } catch (const Failure&) {
        return false; // not written yet
    }
}

std::string Start(const OperatorWorld& world, const ServiceStart& start) {
    if (std::string trouble = start(); !trouble.empty())
        return trouble;
    for (Duration waited{}; !Runs(world); waited += kStartCheckPause)
        if (waited >= kStartLimit || !world.pause(kStartCheckPause))
            return "it does not run: \"tarnexctl status\" says why";
    return "";
}

} // namespace

ExitStatus OfferStart(OperatorWorld& world, const ServiceStart& start) {
    if (!world.ask || !start || !Agreed(world, "Start the service with these settings now"))
        return kExitDone;
    if (const std::string trouble = Start(world, start); !trouble.empty())
        throw Failure(kExitFailed, "the service was not started; " + trouble);
    return Agreed(world, "Raise one harmless alarm and follow it to its end")
               ? TryAlarm(world, kTestSeconds)
               : kExitDone;
}

} // namespace tarnex
