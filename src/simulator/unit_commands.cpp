#include "simulator/unit_commands.h"

#include "simulator/simulated_unit.h"
#include "simulator/words.h"

#include <algorithm>

namespace tarnex {

namespace {

constexpr int kHighestSignal = 99; // "not known"

// The kinds of argument: each returns "" for a good one, else what was expected.
std::string Nothing(std::string_view argument) {
    return argument.empty() ? "" : "expected nothing behind it";
}
std::string LostOrOk(std::string_view argument) {
    return argument == "lost" || argument == "ok" ? "" : "expected \"lost\" or \"ok\"";
}
std::string OnOrOff(std::string_view argument) {
    return argument == "on" || argument == "off" ? "" : "expected \"on\" or \"off\"";
}
std::string Outcome(std::string_view argument) {
    const bool known = argument == "ok" || argument == "fail" || argument == "lost";
    return known ? "" : "expected \"ok\", \"fail\" or \"lost\"";
}
std::string SignalValue(std::string_view argument) {
    return ReadNumberUpTo(argument, kHighestSignal) ? "" : "expected a number from 0 to 99";
}
std::string LoaderWords(std::string_view argument) {
    const bool good = argument == "ok" || argument == "deaf" || ParseLoaderPlan(argument);
    return good ? ""
                : "expected \"ok\", \"deaf\", or STEP[:N] (handshake, erase, write, finish) and "
                  "\"refuse\", \"late\", \"corrupt\", \"silent\" or \"wrong\"";
}
std::string NumberAndText(std::string_view argument) {
    return SplitWord(argument).second.empty() ? "expected a telephone number and a text" : "";
}

} // namespace

struct UnitCommands::Command {
    std::string_view name;
    std::string_view usage;
    std::string (*check)(std::string_view argument);
    std::string (UnitCommands::*run)(std::string_view argument);
    std::string_view help;
};

// clang-format off
const UnitCommands::Command UnitCommands::kCommands[] = {
    {"sms",    "NUMBER TEXT",  NumberAndText, &UnitCommands::ReceiveSms,     "an SMS arrives from NUMBER"},
    {"ac",     "lost|ok",      LostOrOk,      &UnitCommands::SetPower,       "mains power fails or returns"},
    {"con",    "",             Nothing,       &UnitCommands::LoseConnection, "the connection input alarms"},
    {"nocard", "",             Nothing,       &UnitCommands::LoseCard,       "the SIM card is missing"},
    {"csq",    "N",            SignalValue,   &UnitCommands::SetSignal,      "signal quality is N from now on (0 to 99)"},
    {"silent", "on|off",       OnOrOff,       &UnitCommands::SetSilent,      "stop or resume answering"},
    {"send",   "ok|fail|lost", Outcome,       &UnitCommands::SetOutcome,     "what becomes of the next SMS that it sends"},
    {"noise",  "",             Nothing,       &UnitCommands::SendNoise,      "send a line of garbage"},
    {"reboot", "",             Nothing,       &UnitCommands::Reboot,         "restart"},
    {"loader", "STEP[:N] FAULT", LoaderWords, &UnitCommands::SetLoader,      "its next update fails so (write:9 silent); ok, deaf"},
    {"unplug", "",             Nothing,       &UnitCommands::Unplug,         "pull the serial line"},
    {"plug",   "",             Nothing,       &UnitCommands::Plug,           "put the serial line back"},
    {"show",   "",             Nothing,       &UnitCommands::Show,           "what the unit holds"},
    {"help",   "",             Nothing,       &UnitCommands::ShowHelp,       "these commands"},
    {"quit",   "",             Nothing,       &UnitCommands::Quit,           "end the program"},
};
// clang-format on

UnitCommands::UnitCommands(SimulatedUnit& unit, UnitHost host)
    : unit_(unit), host_(std::move(host)) {}

UnitCommands::Parsed UnitCommands::Parse(std::string_view line) {
    line = StripBlanks(line);
    if (line.empty() || line[0] == '#')
        return {};
    const auto [name, argument] = SplitWord(line);
    const auto command = std::ranges::find(kCommands, name, &Command::name);
    if (command == std::end(kCommands))
        return {.trouble = "no command \"" + std::string(name) + "\" (try \"help\")"};
    if (const std::string expected = command->check(argument); !expected.empty())
        return {.trouble = std::string(name) + ": " + expected};
    return {.command = command, .argument = argument};
}

std::string UnitCommands::Check(std::string_view line) {
    return Parse(line).trouble;
}

std::string UnitCommands::Run(std::string_view line) {
    const Parsed parsed = Parse(line);
    return parsed.command ? (this->*parsed.command->run)(parsed.argument) : parsed.trouble;
}

std::vector<std::string> UnitCommands::Help() {
    std::vector<std::string> lines;
    for (const Command& command : kCommands) {
        std::string usage = std::string(command.name) + " " + std::string(command.usage);
        usage.resize(23, ' ');
        lines.push_back(usage + std::string(command.help));
    }
    return lines;
}

std::string UnitCommands::ReceiveSms(std::string_view argument) {
    const auto [number, text] = SplitWord(argument);
    const bool arrived = unit_.ReceiveSms(FromUtf8(number), FromUtf8(text));
    return arrived ? "" : "the SMS is lost: the unit is silent or starting up";
}

std::string UnitCommands::SetPower(std::string_view argument) {
    if (argument == "ok")
        unit_.RegainPower();
    else
        unit_.LosePower();
    return "";
}

std::string UnitCommands::LoseConnection(std::string_view) {
    unit_.LoseConnection();
    return "";
}

std::string UnitCommands::LoseCard(std::string_view) {
    unit_.LoseCard();
    return "";
}

std::string UnitCommands::SetSignal(std::string_view argument) {
    unit_.Signal = ReadNumberUpTo(argument, kHighestSignal).value_or(unit_.Signal);
    return "";
}

std::string UnitCommands::SetSilent(std::string_view argument) {
    unit_.Faults.Silent = argument == "on";
    return "";
}

std::string UnitCommands::SetOutcome(std::string_view argument) {
    unit_.Outcome = argument == "ok"     ? SmsOutcome::kSent
                    : argument == "fail" ? SmsOutcome::kFailed
                                         : SmsOutcome::kLost;
    return "";
}

std::string UnitCommands::SendNoise(std::string_view) {
    unit_.SendNoise();
    return "";
}

std::string UnitCommands::Reboot(std::string_view) {
    unit_.Boot();
    return "";
}

std::string UnitCommands::SetLoader(std::string_view argument) {
    unit_.Loader().Deaf = argument == "deaf";
    unit_.Loader().SetPlan(ParseLoaderPlan(argument));
    return "";
}

std::string UnitCommands::Show(std::string_view) {
    const UnitMemory& memory = unit_.Memory;
    const auto decoded = [](const std::string& hex) { return ToUtf8(FromHexText(hex)); };
    const std::pair<std::string_view, std::string> rows[] = {
        {"number 1", memory.Number1},
        {"number 2", memory.Number2},
        {"SMS centre", decoded(memory.SmsCentre)},
        {"alarm time", memory.AlarmTime},
        {"send times", memory.SendTimes},
        {"connection alarm", memory.ConnectionAlarm == "1" ? "on" : "off"},
        {"power alarm", memory.PowerAlarm == "1" ? "on" : "off"},
        {"name", decoded(memory.Name)},
        {"name used", memory.NameMode == "1" ? "yes" : "no"},
        {"version", memory.Version},
        {"serial number", memory.Serial},
        {"display line 1", memory.Lcd1},
        {"display line 2", memory.Lcd2},
        {"PC alarm", memory.PcAlarm},
        {"mains power", memory.AlarmState == "1" ? "lost" : "ok"},
        {"signal quality", std::to_string(unit_.Signal)},
        {"state", unit_.Faults.Silent            ? "silent"
                  : !unit_.Loader().HasProgram() ? "without program, in its loader"
                  : unit_.Loader().InCharge()    ? "in its loader"
                  : unit_.Booting()              ? "starting up"
                                                 : "up"},
    };
    for (const auto& [label, value] : rows) {
        std::string line(label);
        line.resize(18, ' ');
        host_.print(line + value);
    }
    return "";
}

std::string UnitCommands::ShowHelp(std::string_view) {
    for (const std::string& line : Help())
        host_.print(line);
    return "";
}

std::string UnitCommands::Quit(std::string_view) {
    host_.quit();
    return "";
}

Result<std::vector<ScriptStep>> ParseUnitScript(std::string_view script) {
    std::vector<ScriptStep> steps;
    for (int number = 1; !script.empty(); ++number) {
        const std::size_t end = std::min(script.find('\n'), script.size());
        const std::string_view line = StripBlanks(script.substr(0, end));
        script.remove_prefix(std::min(end + 1, script.size()));
        if (line.empty() || line[0] == '#')
            continue;
        const auto [seconds, command] = SplitWord(line);
        const std::optional<Duration> at = ReadSeconds(seconds);
        const std::string place = "line " + std::to_string(number) + ": ";
        if (!at)
            return Trouble{place + "expected SECONDS COMMAND"};
        if (command.empty() || command[0] == '#')
            return Trouble{place + "no command behind the seconds"};
        if (const std::string trouble = UnitCommands::Check(command); !trouble.empty())
            return Trouble{place + trouble};
        steps.push_back({*at, std::string(command)});
    }
    return steps;
}

} // namespace tarnex
