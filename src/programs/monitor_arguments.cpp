#include "programs/monitor_arguments.h"

#include "programs/program_output.h"
#include "simulator/command_words.h"
#include "simulator/unit_script.h"

#include <vector>

#include <getopt.h>

namespace tarnex {

namespace {

using enum MonitorArguments::Command;

constexpr char kUsage[] =
    "Usage: tarnex-monitor [OPTION]... COMMAND\n"
    "A monitoring program on a control link of TarnexComm.\n"
    "\n"
    "  --link 1..5          which link: UDP port 7840 to 7844 (1)\n"
    "  --address ADDRESS    IPv4 address of the service (127.0.0.1)\n"
    "  --encoding NAME      GBK or UTF-8, as the service is set (GBK)\n"
    "  --name NAME          what to call itself when greeting (tarnex-monitor)\n"
    "  --help, --version\n"
    "\n"
    "listen: greet the service, send heartbeats, show every message with its meaning. The service\n"
    "takes the link for lost up to 40 seconds after the end.\n"
    "  --for SECONDS        end after that time\n"
    "  --until CODE         end as soon as a message begins with CODE\n"
    "\n"
    "notify: report one event and end. The link has no answer to it.\n"
    "  --service SERVICE    required; words and numbers below\n"
    "  --state STATE        required\n"
    "  --action ACTION      what is done about it (none)\n"
    "  --machine 0..9       which machine (1)\n"
    "  --machine-name TEXT\n"
    "  --memo TEXT\n"
    "  --sms yes|no         pass it on by SMS (yes)\n"
    "  --mail yes|no        pass it on by mail (yes)\n"
    "\n"
    "raw TEXT: send any message and end.\n";

constexpr char kUsageEnd[] =
    "\n"
    "Exit status: 0 done, 1 CODE was not seen in time, 64 wrong usage, 69 no service there.\n";

bool ReadNumberUpTo(const std::string& value, int highest, int& number) {
    return ReadNumber(value, number) && number >= 0 && number <= highest;
}

bool ReadWord(std::span<const EventWord> words, const std::string& value, int highest,
              int& number) {
    number = NumberOf(words, value).value_or(-1);
    return number >= 0 && number <= highest;
}

bool ReadYesNo(const std::string& value, bool& flag) {
    flag = value == "yes";
    return flag || value == "no";
}

bool IsIpv4(std::string_view address) {
    for (int part = 0; part < 4; ++part) {
        const std::size_t end = part < 3 ? address.find('.') : address.size();
        int number = 0;
        if (end == address.npos ||
            !ReadNumberUpTo(std::string(address.substr(0, end)), 255, number))
            return false;
        address.remove_prefix(std::min(end + 1, address.size()));
    }
    return true;
}

// An option with its value. read stores the value; false when it is none that the option takes.
struct ValueOption {
    const char* name;
    std::optional<MonitorArguments::Command> only_of; // nothing: of every command
    const char* expected;
    bool (*read)(const std::string& value, MonitorArguments& arguments);
};

using Value = const std::string&;
using Args = MonitorArguments&;

// clang-format off
const ValueOption kOptions[] = {
    {"link",         {},      "1 to 5",             [](Value v, Args a) { return ReadNumberUpTo(v, 5, a.monitor.link) && a.monitor.link > 0; }},
    {"address",      {},      "an IPv4 address",    [](Value v, Args a) { a.monitor.address = v; return IsIpv4(v); }},
    {"encoding",     {},      "GBK or UTF-8",       [](Value v, Args a) { a.encoding = v; return v == "GBK" || v == "UTF-8"; }},
    {"name",         {},      "a name",             [](Value v, Args a) { a.monitor.name = FromUtf8(v); return true; }},
    {"for",          kListen, "seconds",            [](Value v, Args a) { a.listen_time = ParseSeconds(v); return a.listen_time.has_value(); }},
    {"until",        kListen, "a code",             [](Value v, Args a) { a.until = FromUtf8(v); return !v.empty(); }},
    {"service",      kNotify, "a service",          [](Value v, Args a) { return ReadWord(EventServices(), v, 99, a.event.service); }},
    {"state",        kNotify, "a state",            [](Value v, Args a) { return ReadWord(EventStates(), v, 9, a.event.state); }},
    {"action",       kNotify, "an action",          [](Value v, Args a) { return ReadWord(EventActions(), v, 9, a.event.action); }},
    {"machine",      kNotify, "0 to 9",             [](Value v, Args a) { return ReadNumberUpTo(v, 9, a.event.machine); }},
    {"machine-name", kNotify, "a text",             [](Value v, Args a) { a.event.machine_name = FromUtf8(v); return true; }},
    {"memo",         kNotify, "a text",             [](Value v, Args a) { a.event.memo = FromUtf8(v); return true; }},
    {"sms",          kNotify, "yes or no",          [](Value v, Args a) { return ReadYesNo(v, a.event.by_sms); }},
    {"mail",         kNotify, "yes or no",          [](Value v, Args a) { return ReadYesNo(v, a.event.by_mail); }},
};
// clang-format on

struct CommandName {
    std::string_view name;
    MonitorArguments::Command command;
    int words; // that follow it
};

constexpr CommandName kCommands[] = {
    {"listen", kListen, 0},
    {"notify", kNotify, 0},
    {"raw", kRaw, 1},
};

int UsageError(const std::string& trouble) {
    std::fprintf(stderr, "tarnex-monitor: %s (try --help)\n", trouble.c_str());
    return kExitUsage;
}

void PrintWords(const char* title, std::span<const EventWord> words) {
    std::printf("\n%s, a word or its number:\n", title);
    for (const EventWord& word : words)
        std::printf("  %-16s %2d  %s\n", std::string(word.word).c_str(), word.number,
                    std::string(word.meaning).c_str());
}

void PrintHelp() {
    std::fputs(kUsage, stdout);
    PrintWords("SERVICE", EventServices());
    PrintWords("STATE", EventStates());
    PrintWords("ACTION", EventActions());
    std::fputs(kUsageEnd, stdout);
}

// "", or what is wrong with the words that are no options.
std::string ReadCommand(std::span<char* const> words, MonitorArguments& arguments) {
    if (words.empty())
        return "no command given";
    const auto found = std::ranges::find(kCommands, std::string_view(words[0]), &CommandName::name);
    if (found == std::end(kCommands))
        return "no command \"" + std::string(words[0]) + "\"";
    if (int(words.size()) != 1 + found->words)
        return std::string(found->name) + ": " +
               (found->words == 0 ? "expected nothing behind it" : "expected one text");
    arguments.command = found->command;
    if (found->command == kRaw)
        arguments.raw = FromUtf8(words[1]);
    return "";
}

} // namespace

std::optional<int> ReadMonitorArguments(int argc, char** argv, MonitorArguments& arguments) {
    std::vector<option> options;
    for (const ValueOption& row : kOptions)
        options.push_back({row.name, required_argument, nullptr, 'o'});
    options.push_back({"help", no_argument, nullptr, 'h'});
    options.push_back({"version", no_argument, nullptr, 'v'});
    options.push_back({});

    std::vector<const ValueOption*> given;
    int index = 0;
    for (int letter; (letter = getopt_long(argc, argv, "", options.data(), &index)) != -1;) {
        switch (letter) {
        case 'o':
            given.push_back(&kOptions[index]);
            if (!kOptions[index].read(optarg, arguments))
                return UsageError("--" + std::string(kOptions[index].name) + ": expected " +
                                  kOptions[index].expected + ", not \"" + optarg + "\"");
            break;
        case 'h':
            PrintHelp();
            return kExitDone;
        case 'v':
            std::puts("tarnex-monitor " TARNEX_VERSION);
            return kExitDone;
        default: // getopt_long has said what is wrong
            return kExitUsage;
        }
    }
    const std::span<char* const> words(argv + optind, std::size_t(argc - optind));
    if (const std::string trouble = ReadCommand(words, arguments); !trouble.empty())
        return UsageError(trouble);
    for (const ValueOption* row : given)
        if (row->only_of && *row->only_of != arguments.command)
            return UsageError(std::string(words[0]) + " takes no --" + row->name);
    if (arguments.command == kNotify && (arguments.event.service < 0 || arguments.event.state < 0))
        return UsageError("notify needs --service and --state");
    return std::nullopt;
}

} // namespace tarnex
