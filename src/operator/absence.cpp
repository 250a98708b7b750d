#include "operator/absence.h"

#include "operator/settings_file.h"
#include "operator/text_output.h"

namespace tarnex {

namespace {

// What keeps it from starting; "" for nothing that is known.
std::string Obstacle(const OperatorWorld& world, const std::string& lock_holder) {
    if (!lock_holder.empty())
        return lock_holder + " holds its lock " + world.lock_path + ": end that program";
    try {
        const SettingsFile file(world);
        if (const std::string why = file.KeptFromService(); !why.empty())
            return why;
        const auto on = [&file](const Setting& setting) {
            return IsOn(setting, file.Value(setting));
        };
        if (!on("service-enabled"_setting))
            return "the settings switch it off: \"tarnexctl settings set service-enabled Enable\"";
        if (!on("run-allowed"_setting))
            return "the settings do not allow it to run: \"tarnexctl settings set run-allowed on\"";
        return "";
    } catch (const Failure& unreadable) {
        return unreadable.what();
    }
}

std::string HowItEnded(const OperatorWorld& world, const Json& last) {
    if (last.is_null())
        return "it has left no status file " + world.status_path +
               " (not started yet, or without a runtime folder)";
    const long long now =
        std::chrono::floor<std::chrono::seconds>(world.now().time_since_epoch()).count();
    const auto ago = [&](const char* time) {
        return AgeText(now - last.at(time).get<long long>());
    };
    if (!last.at("ended_at").is_null())
        return "it was ended in order " + ago("ended_at") + " ago";
    return "process " + last.at("pid").dump() +
           " has gone without an orderly end (a signal, a crash or a loss of power), and its last "
           "word is " +
           ago("written_at") + " old";
}

} // namespace

std::string WhyAbsent(const OperatorWorld& world, const Json& last_status) {
    const Holder holder = world.machine.LockHolder(world.lock_path);
    if (holder.process != 0 && world.is_service(holder.process))
        return holder.text + " runs, but not by the status file " + world.status_path +
               ": free space where its disk is full; else restart it with \"" +
               world.words.restart_service + "\", or name its file with --status-file";
    const std::string obstacle = Obstacle(world, holder.text);
    return "the service does not run: " +
           (obstacle.empty() ? HowItEnded(world, last_status) + ";"
                             : obstacle + (obstacle.ends_with(')') ? ";" : ", then")) +
           " start it with \"" + world.words.start_service + "\"";
}

} // namespace tarnex
