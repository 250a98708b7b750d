#include "simulator/unit_script.h"

#include "simulator/command_words.h"
#include "simulator/unit_commands.h"

namespace tarnex {

std::optional<Duration> ParseSeconds(std::string_view text) {
    double seconds = 0;
    if (!ReadNumber(text, seconds) || !(seconds >= 0 && seconds <= 1e9))
        return std::nullopt;
    return std::chrono::round<Duration>(std::chrono::duration<double>(seconds));
}

std::variant<std::vector<ScriptStep>, std::string> ParseUnitScript(std::string_view script) {
    std::vector<ScriptStep> steps;
    for (int number = 1; !script.empty(); ++number) {
        const std::size_t end = std::min(script.find('\n'), script.size());
        const std::string_view line = StripBlanks(script.substr(0, end));
        script.remove_prefix(std::min(end + 1, script.size()));
        if (line.empty() || line[0] == '#')
            continue;
        const auto [seconds, command] = SplitWord(line);
        const std::optional<Duration> at = ParseSeconds(seconds);
        const std::string place = "line " + std::to_string(number) + ": ";
        if (!at)
            return place + "expected SECONDS COMMAND";
        if (command.empty() || command[0] == '#')
            return place + "no command behind the seconds";
        if (const std::string trouble = UnitCommands::Check(command); !trouble.empty())
            return place + trouble;
        steps.push_back({*at, std::string(command)});
    }
    return steps;
}

} // namespace tarnex
