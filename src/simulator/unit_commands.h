#pragma once

#include "platform/clock.h"
#include "platform/result.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnex {

class SimulatedUnit;

// What the program around a simulated unit does for its operator.
struct UnitHost {
    // Put the unit on its line or take it off. "", or what stands in the way.
    std::function<std::string()> plug;
    std::function<std::string()> unplug;
    std::function<void()> quit;
    std::function<void(const std::string& line)> print; // UTF-8, without line end
};

// The commands with which an operator or a script makes things happen to a simulated unit. A line
// is a command with its arguments in UTF-8; empty lines and "#" comments do nothing.
class UnitCommands {
  public:
    // unit must outlive the commands.
    UnitCommands(SimulatedUnit& unit, UnitHost host);

    // "" when line is a command that can be run, else what is wrong with it.
    static std::string Check(std::string_view line);
    // Runs the line. "", or why nothing happened.
    std::string Run(std::string_view line);

    // One line for each command.
    static std::vector<std::string> Help();

  private:
    struct Command;
    static const Command kCommands[];
    struct Parsed {
        const Command* command = nullptr; // nullptr with no trouble: nothing to do
        std::string_view argument{};
        std::string trouble{};
    };
    static Parsed Parse(std::string_view line);

    std::string ReceiveSms(std::string_view argument);
    std::string SetPower(std::string_view argument);
    std::string LoseConnection(std::string_view);
    std::string LoseCard(std::string_view);
    std::string SetSignal(std::string_view argument);
    std::string SetSilent(std::string_view argument);
    std::string SetOutcome(std::string_view argument);
    std::string SendNoise(std::string_view);
    std::string Reboot(std::string_view);
    std::string SetLoader(std::string_view argument);
    std::string Plug(std::string_view) { return host_.plug(); }
    std::string Unplug(std::string_view) { return host_.unplug(); }
    std::string Show(std::string_view);
    std::string ShowHelp(std::string_view);
    std::string Quit(std::string_view);

    SimulatedUnit& unit_;
    UnitHost host_;
};

// One line of a script: "12.5 ac lost".
struct ScriptStep {
    Duration at; // from the start of the script
    std::string command;
};

// The steps of a script, or what is wrong with its first bad line: "line 3: ...". Empty lines and
// lines that begin with "#" do nothing.
Result<std::vector<ScriptStep>> ParseUnitScript(std::string_view script);

} // namespace tarnex
