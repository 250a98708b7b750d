#include "programs/monitor_arguments.h"

#include "operator/arguments.h"
#include "simulator/unit_commands.h"
#include "simulator/words.h"

#include <iostream>

#include <asio/ip/address_v4.hpp>

namespace tarnex {

namespace {

using enum MonitorArguments::Command;

// Each stores a good value; false for a wrong one.
bool Take(std::optional<int> value, int lowest, int highest, int& number) {
    number = value.value_or(-1);
    return number >= lowest && number <= highest;
}

bool ReadYesNo(const std::string& value, bool& flag) {
    flag = value == "yes";
    return flag || value == "no";
}

bool IsIpv4(const std::string& address) {
    asio::error_code error;
    asio::ip::make_address_v4(address, error);
    return !error;
}

// An option with its value. read stores the value; false when it is none that the option takes.
struct ValueOption {
    const char* name;
    const char* type;
    std::optional<MonitorArguments::Command> only_of; // nothing: of every command
    std::string meaning;
    const char* expected;
    bool (*read)(const std::string& value, MonitorArguments& arguments);
};

std::string PortRange() {
    return std::to_string(kFirstServicePort) + " to " +
           std::to_string(kFirstServicePort + kServiceLinks - 1);
}

using Value = const std::string&;
using Args = MonitorArguments&;

// clang-format off
const ValueOption kOptions[] = {
    {"--link",         "0..4",    {},      "which link: UDP port " + PortRange() + " (0)",            "0 to 4",          [](Value v, Args a) { return Take(ReadNumber<int>(v), 0, kServiceLinks - 1, a.monitor.link); }},
    {"--address",      "ADDRESS", {},      "IPv4 address of the service (127.0.0.1)",                 "an IPv4 address", [](Value v, Args a) { a.monitor.address = v; return IsIpv4(v); }},
    {"--encoding",     "NAME",    {},      "GBK or UTF-8, as the service is set (GBK)",               "GBK or UTF-8",    [](Value v, Args a) { a.encoding = v; return v == "GBK" || v == "UTF-8"; }},
    {"--name",         "NAME",    {},      "what to call itself when greeting (tarnex-monitor)",      "a name",          [](Value v, Args a) { a.monitor.name = FromUtf8(v); return true; }},
    {"--for",          "SECONDS", kListen, "end after that time",                                     "seconds",         [](Value v, Args a) { a.listen_time = ReadSeconds(v); return a.listen_time.has_value(); }},
    {"--until",        "CODE",    kListen, "end as soon as a message begins with CODE",               "a code",          [](Value v, Args a) { a.until = FromUtf8(v); return !v.empty(); }},
    {"--service",      "SERVICE", kNotify, "required; words and numbers below",                       "a service",       [](Value v, Args a) { return Take(NumberOf(EventServices(), v), 0, 99, a.event.service); }},
    {"--state",        "STATE",   kNotify, "required",                                                "a state",         [](Value v, Args a) { return Take(NumberOf(EventStates(), v), 0, 9, a.event.state); }},
    {"--action",       "ACTION",  kNotify, "what is done about it (none)",                            "an action",       [](Value v, Args a) { return Take(NumberOf(EventActions(), v), 0, 9, a.event.action); }},
    {"--machine",      "0..9",    kNotify, "which machine (1)",                                       "0 to 9",          [](Value v, Args a) { return Take(ReadNumber<int>(v), 0, 9, a.event.machine); }},
    {"--machine-name", "TEXT",    kNotify, "its name (none)",                                         "a text",          [](Value v, Args a) { a.event.machine_name = FromUtf8(v); return true; }},
    {"--memo",         "TEXT",    kNotify, "what else is to be said (nothing)",                       "a text",          [](Value v, Args a) { a.event.memo = FromUtf8(v); return true; }},
    {"--sms",          "yes|no",  kNotify, "pass it on by SMS (yes)",                                 "yes or no",       [](Value v, Args a) { return ReadYesNo(v, a.event.by_sms); }},
    {"--mail",         "yes|no",  kNotify, "pass it on by mail (yes)",                                "yes or no",       [](Value v, Args a) { return ReadYesNo(v, a.event.by_mail); }},
};
// clang-format on

struct CommandName {
    std::string_view name;
    MonitorArguments::Command command;
    bool takes_text;
    const char* options; // heading of its own options
};

constexpr CommandName kCommands[] = {
    {"listen", kListen, false, "Options of listen"},
    {"notify", kNotify, false, "Options of notify"},
    {"raw", kRaw, true, ""},
};

void AddWords(std::string& footer, const char* title, std::span<const EventWord> words) {
    footer += std::string("\n") + title + ", a word or its number:\n";
    for (const EventWord& word : words) {
        char line[80];
        std::snprintf(line, sizeof line, "  %-16s %2d  ", std::string(word.word).c_str(),
                      word.number);
        footer += line + std::string(word.meaning) + "\n";
    }
}

std::string Footer() {
    std::string footer =
        "Commands:\n"
        "  listen    greet the service, send heartbeats, show every message with its meaning. The\n"
        "            service takes the link for lost up to 40 seconds after the end\n"
        "  notify    report one event and end. The link has no answer to it\n"
        "  raw TEXT  send any message and end\n";
    AddWords(footer, "SERVICE", EventServices());
    AddWords(footer, "STATE", EventStates());
    AddWords(footer, "ACTION", EventActions());
    return footer + "\nExit status: 0 done, 1 CODE was not seen in time, 64 wrong usage, 69 no "
                    "service there.";
}

// "", or what is wrong with the words that are no options.
std::string ReadCommand(const std::string& name, const std::optional<std::string>& text,
                        MonitorArguments& arguments) {
    const auto found = std::ranges::find(kCommands, name, &CommandName::name);
    if (name.empty())
        return "no command given";
    if (found == std::end(kCommands))
        return "no command \"" + name + "\"";
    if (text.has_value() != found->takes_text)
        return name + ": " +
               (found->takes_text ? "expected one text" : "expected nothing behind it");
    arguments.command = found->command;
    arguments.raw = FromUtf8(text.value_or(""));
    return "";
}

// "", or which options and the command do not go together.
std::string CheckOptions(const std::string& command, const std::vector<const ValueOption*>& given,
                         const MonitorArguments& arguments) {
    for (const ValueOption* row : given)
        if (row->only_of && *row->only_of != arguments.command)
            return command + " takes no " + row->name;
    if (arguments.command == kNotify && (arguments.event.service < 0 || arguments.event.state < 0))
        return "notify needs --service and --state";
    return "";
}

} // namespace

std::optional<ExitStatus> ReadMonitorArguments(std::vector<std::string> words,
                                               MonitorArguments& arguments) {
    Arguments line("tarnex-monitor", "A monitoring program on a control link of TarnexComm.");
    std::string command;
    std::optional<std::string> text;
    std::vector<const ValueOption*> given;
    line.Value("COMMAND", "", "listen, notify or raw; see below", command);
    line.Value("TEXT", "", "of raw: the message", text);
    for (const ValueOption& row : kOptions) {
        const auto read = [&arguments, &given, &row](const std::string& value) {
            given.push_back(&row);
            return row.read(value, arguments)
                       ? ""
                       : std::string("expected ") + row.expected + ", not \"" + value + "\"";
        };
        const auto of = std::ranges::find(kCommands, row.only_of, &CommandName::command);
        line.EachValue(row.name, row.type, row.meaning, read,
                       of == std::end(kCommands) ? "" : of->options);
    }
    line.Footer(Footer());
    line.OnGiven([&] {
        const std::string trouble = ReadCommand(command, text, arguments);
        return trouble.empty() ? CheckOptions(command, given, arguments) : trouble;
    });
    return line.Read(std::move(words), std::cout, std::cerr);
}

} // namespace tarnex
