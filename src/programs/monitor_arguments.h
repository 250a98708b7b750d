#pragma once

#include "platform/exit_status.h"
#include "simulator/simulated_monitor.h"

#include <optional>
#include <string>
#include <vector>

namespace tarnex {

// What the command line of tarnex-monitor asks for.
struct MonitorArguments {
    enum class Command { kListen, kNotify, kRaw };

    Command command = Command::kListen;
    MonitorOptions monitor{.name = u"tarnex-monitor"};
    std::string encoding = "GBK";
    std::optional<Duration> listen_time;            // listen
    std::optional<Text> until;                      // listen
    MonitorEvent event{.service = -1, .state = -1}; // notify
    Text raw;                                       // raw
};

// words: without the program's name. The exit status, or nothing when there is a command to carry
// out.
std::optional<ExitStatus> ReadMonitorArguments(std::vector<std::string> words,
                                               MonitorArguments& arguments);

} // namespace tarnex
