// tarnex-sim: a GSM alarm unit on a pseudo terminal.

#include "adapters/asio/line_input.h"
#include "adapters/system/iconv_code_page.h"
#include "programs/program_output.h"
#include "programs/pty_line.h"
#include "programs/stable_link.h"
#include "simulator/simulated_unit.h"
#include "simulator/unit_commands.h"
#include "simulator/unit_protocol.h"
#include "simulator/unit_script.h"

#include <csignal>
#include <fstream>
#include <optional>

#include <getopt.h>
#include <unistd.h>

namespace tarnex {
namespace {

constexpr int kLoaderBaud = 38400;

constexpr char kUsage[] =
    "Usage: tarnex-sim [OPTION]...\n"
    "A simulated GSM alarm unit on a pseudo terminal.\n"
    "\n"
    "  --link PATH          make PATH a link to the terminal as long as the unit is plugged in\n"
    "  --script FILE        run the commands of FILE: lines \"SECONDS COMMAND\", \"#\" comments\n"
    "  --boot SECONDS       start up first, for so long; also the time of every restart\n"
    "  --sms-seconds N      time from taking an SMS to reporting what became of it (4)\n"
    "  --quiet              do not show the commands that the unit receives\n"
    "  --help, --version\n"
    "\n"
    "Commands on standard input and in scripts:\n";

constexpr char kUsageEnd[] =
    "\n"
    "The program ends on \"quit\", on the signals TERM and INT and at the end of input from a\n"
    "terminal; the end of any other input leaves it running.\n"
    "Exit status: 0 done, 1 the terminal or its link cannot be made, 64 wrong usage or script.\n";

struct Options {
    std::optional<std::string> link;
    std::vector<ScriptStep> script;
    UnitTimes times;
    bool boots_first = false;
    bool quiet = false;
};

// The unit, its terminal and its operator.
class Program {
  public:
    explicit Program(Options options);
    int Run();

  private:
    struct Line : SerialLine {
        explicit Line(PtyLine& pty) : pty(pty) {}
        void Send(std::string_view bytes) override { pty.Send(bytes); }
        PtyLine& pty;
    };

    void Print(const std::string& line) { PrintWithTime(loop_, line); }
    std::string Plug();
    std::string Unplug();
    void Quit();
    void Receive(std::string_view bytes);
    void RunCommand(const std::string& command);
    void RunScript();
    void ShowCommand(std::string_view line);
    void ShowSms(const SentSms& sms);

    const Options options_;
    AsioLoop loop_;
    IconvCodePage code_page_{"GBK"};
    std::optional<StableLink> link_;
    SimulatedUnit unit_{loop_};
    PtyLine pty_{loop_, [this](std::string_view bytes) { Receive(bytes); }};
    int baud_ = 0;
    Line line_{pty_};
    UnitCommands commands_{unit_,
                           {.plug = [this] { return Plug(); },
                            .unplug = [this] { return Unplug(); },
                            .quit = [this] { Quit(); },
                            .print = [this](const std::string& line) { Print(line); }}};
    bool quitting_ = false;
};

Program::Program(Options options) : options_(std::move(options)) {
    if (options_.link)
        link_.emplace(*options_.link);
    unit_.Times = options_.times;
    unit_.OnCommand([this](std::string_view line) { ShowCommand(line); });
    unit_.OnSent([this](const SentSms& sms) { ShowSms(sms); });
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGPIPE})
        loop_.OnSignal(signal, [this] { Quit(); });
}

int Program::Run() {
    if (const std::string obstacle = Plug(); !obstacle.empty()) {
        std::fprintf(stderr, "tarnex-sim: %s\n", obstacle.c_str());
        return kExitFailed;
    }
    if (options_.boots_first)
        unit_.Boot();
    RunScript();
    const LineInput input(loop_, STDIN_FILENO,
                          {.line = [this](const std::string& line) { RunCommand(line); },
                           .end =
                               [this] {
                                   if (isatty(STDIN_FILENO))
                                       Quit();
                               }});
    if (!quitting_)
        loop_.Run();
    Unplug();
    return kExitDone;
}

std::string Program::Plug() {
    if (pty_.IsOpen())
        return "the unit is plugged in already";
    if (const std::string obstacle = pty_.Open(); !obstacle.empty())
        return "no pseudo terminal: " + obstacle;
    std::string place = pty_.DeviceName();
    if (link_) {
        if (std::string obstacle = link_->Point(place); !obstacle.empty()) {
            pty_.Close();
            return obstacle;
        }
        place = link_->Path() + " (" + place + ")";
    }
    unit_.Plugged(line_);
    Print("plugged in at " + place);
    return "";
}

std::string Program::Unplug() {
    if (!pty_.IsOpen())
        return "the unit is not plugged in";
    unit_.Unplugged();
    if (link_)
        link_->Remove();
    pty_.Close();
    Print("unplugged");
    return "";
}

void Program::Quit() {
    quitting_ = true;
    loop_.Stop();
}

// A terminal keeps no parity: the speed stands for all settings of the line.
void Program::Receive(std::string_view bytes) {
    if (const int baud = pty_.Baud(); baud != baud_) {
        baud_ = baud;
        unit_.Opened({.baud = baud, .parity = baud == kLoaderBaud ? 'E' : 'N'});
    }
    unit_.Received(bytes);
}

void Program::RunCommand(const std::string& command) {
    if (quitting_)
        return;
    if (const std::string trouble = commands_.Run(command); !trouble.empty())
        std::fprintf(stderr, "tarnex-sim: %s\n", trouble.c_str());
}

void Program::RunScript() {
    for (const ScriptStep& step : options_.script)
        loop_.CallAfter(step.at, [this, command = step.command] {
            Print("script: " + command);
            RunCommand(command);
        });
}

void Program::ShowCommand(std::string_view line) {
    if (!options_.quiet)
        Print("command: " + ReadableProtocolLine(line, code_page_));
}

void Program::ShowSms(const SentSms& sms) {
    Print("SMS to number " + std::to_string(sms.number_index) + " (" + sms.telephone_number +
          "): " + ToUtf8(sms.text));
}

int UsageError(const std::string& trouble) {
    std::fprintf(stderr, "tarnex-sim: %s (try --help)\n", trouble.c_str());
    return kExitUsage;
}

void PrintHelp() {
    std::fputs(kUsage, stdout);
    for (const std::string& line : UnitCommands::Help())
        std::printf("  %s\n", line.c_str());
    std::fputs(kUsageEnd, stdout);
}

// "", or what is wrong with the script.
std::string ReadScript(const char* path, std::vector<ScriptStep>& script) {
    std::ifstream file(path, std::ios::binary);
    std::string text;
    std::getline(file, text, '\0');
    if (!file.is_open() || file.bad())
        return std::string(path) + " cannot be read";
    auto parsed = ParseUnitScript(text);
    if (const auto* trouble = std::get_if<std::string>(&parsed))
        return std::string(path) + ", " + *trouble;
    script = std::get<std::vector<ScriptStep>>(std::move(parsed));
    return "";
}

// The exit status, or nothing when the unit is to run.
std::optional<int> ReadArguments(int argc, char** argv, Options& options) {
    const option known[] = {
        {"link", required_argument, nullptr, 'l'}, {"script", required_argument, nullptr, 's'},
        {"boot", required_argument, nullptr, 'b'}, {"sms-seconds", required_argument, nullptr, 'm'},
        {"quiet", no_argument, nullptr, 'q'},      {"help", no_argument, nullptr, 'h'},
        {"version", no_argument, nullptr, 'v'},    {}};
    for (int letter; (letter = getopt_long(argc, argv, "", known, nullptr)) != -1;) {
        switch (letter) {
        case 'l':
            if (!*optarg)
                return UsageError("--link needs a path");
            options.link = optarg;
            break;
        case 's':
            if (const std::string trouble = ReadScript(optarg, options.script); !trouble.empty())
                return UsageError(trouble);
            break;
        case 'b':
        case 'm': {
            const std::optional<Duration> seconds = ParseSeconds(optarg);
            if (!seconds)
                return UsageError("\"" + std::string(optarg) + "\" is not a number of seconds");
            (letter == 'b' ? options.times.Boot : options.times.Sms) = *seconds;
            options.boots_first = options.boots_first || letter == 'b';
            break;
        }
        case 'q':
            options.quiet = true;
            break;
        case 'h':
            PrintHelp();
            return kExitDone;
        case 'v':
            std::puts("tarnex-sim " TARNEX_VERSION);
            return kExitDone;
        default: // getopt_long has said what is wrong
            return kExitUsage;
        }
    }
    if (optind < argc)
        return UsageError("unexpected argument \"" + std::string(argv[optind]) + "\"");
    return std::nullopt;
}

} // namespace
} // namespace tarnex

int main(int argc, char** argv) {
    tarnex::Options options;
    if (const auto status = tarnex::ReadArguments(argc, argv, options))
        return *status;
    return tarnex::Program(std::move(options)).Run();
}
