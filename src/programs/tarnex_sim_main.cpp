// tarnex-sim: a GSM alarm unit on a pseudo terminal.

#include "adapters/linux/line_input.h"
#include "adapters/linux/pty_line.h"
#include "adapters/linux/signals.h"
#include "adapters/linux/stable_link.h"
#include "adapters/system/arguments.h"
#include "adapters/system/system_code_page.h"
#include "operator/arguments.h"
#include "programs/program_output.h"
#include "simulator/simulated_unit.h"
#include "simulator/unit_commands.h"
#include "simulator/unit_protocol.h"
#include "simulator/words.h"

#include <csignal>
#include <fstream>
#include <iostream>
#include <optional>

#include <unistd.h>

namespace tarnex {
namespace {

constexpr int kLoaderBaud = 38400;

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
    Signals signals_{loop_};
    SystemCodePage code_page_{"GBK"};
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
        signals_.On(signal, [this] { Quit(); });
}

int Program::Run() {
    if (const std::string trouble = Plug(); !trouble.empty()) {
        std::fprintf(stderr, "tarnex-sim: %s\n", trouble.c_str());
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
    if (const std::string trouble = pty_.Open(); !trouble.empty())
        return "no pseudo terminal: " + trouble;
    std::string place = pty_.DeviceName();
    if (link_) {
        if (std::string trouble = link_->Point(place); !trouble.empty()) {
            pty_.Close();
            return trouble;
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

// "", or what is wrong with the script.
std::string ReadScript(const std::string& path, std::vector<ScriptStep>& script) {
    std::ifstream file(path, std::ios::binary);
    std::string text;
    std::getline(file, text, '\0');
    if (!file.is_open() || file.bad())
        return path + " cannot be read";
    auto parsed = ParseUnitScript(text);
    if (!parsed)
        return path + ", " + parsed.TroubleText();
    script = std::move(*parsed);
    return "";
}

std::string ReadTime(const std::string& text, Duration& time) {
    const std::optional<Duration> seconds = ReadSeconds(text);
    if (!seconds)
        return "\"" + text + "\" is not a number of seconds";
    time = *seconds;
    return "";
}

std::string Footer() {
    std::string footer = "Commands on standard input and in scripts:\n";
    for (const std::string& line : UnitCommands::Help())
        footer += "  " + line + "\n";
    return footer +
           "\n"
           "The program ends on \"quit\", on the signals TERM and INT and at the end of input "
           "from\n"
           "a terminal; the end of any other input leaves it running.\n"
           "Exit status: 0 done, 1 the terminal or its link cannot be made, 64 wrong usage or\n"
           "script.";
}

// The exit status, or nothing when the unit is to run.
std::optional<ExitStatus> ReadOptions(std::vector<std::string> words, Options& options) {
    using Value = const std::string&;
    Arguments arguments("tarnex-sim", "A simulated GSM alarm unit on a pseudo terminal.");
    arguments.EachValue("--link", "PATH",
                        "make PATH a link to the terminal as long as the unit is plugged in",
                        [&](Value path) {
                            options.link = path;
                            return path.empty() ? "it needs a path" : "";
                        });
    arguments.EachValue("--script", "FILE",
                        "run the commands of FILE: lines \"SECONDS COMMAND\", \"#\" comments",
                        [&](Value path) { return ReadScript(path, options.script); });
    arguments.EachValue("--boot", "SECONDS",
                        "start up first, for so long; also the time of every restart",
                        [&](Value text) {
                            options.boots_first = true;
                            return ReadTime(text, options.times.Boot);
                        });
    arguments.EachValue("--sms-seconds", "N",
                        "time from taking an SMS to reporting what became of it (4)",
                        [&](Value text) { return ReadTime(text, options.times.Sms); });
    arguments.Flag("--quiet", options.quiet, "do not show the commands that the unit receives");
    arguments.Footer(Footer());
    return arguments.Read(std::move(words), std::cout, std::cerr);
}

} // namespace
} // namespace tarnex

int main(int argc, char** argv) {
    tarnex::Options options;
    if (const auto status = tarnex::ReadOptions(tarnex::ProgramArguments(argc, argv), options))
        return *status;
    return tarnex::Program(std::move(options)).Run();
}
