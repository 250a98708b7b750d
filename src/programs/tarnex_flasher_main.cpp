// tarnex-flasher: loads new firmware into the unit.

#include "adapters/system/arguments.h"
#include "adapters/system/end_requests.h"
#include "adapters/system/serial_names.h"
#include "adapters/system/terminal.h"
#include "adapters/system/this_system.h"
#include "operator/arguments.h"
#include "programs/machine.h"
#include "programs/tool_window.h"
#include "simulator/words.h"
#include "tools/firmware_flasher.h"
#include "tools/line_flasher.h"

#include <iostream>

namespace tarnex {
namespace {

struct Options {
    std::optional<UpdatePort> port;
    std::string device; // the path of a device, which no number of a port stands for
    std::string file;
    bool check_only = false;
};

// "COM3", "com3" and "3" are 3; 0 for what is no port.
int PortNumber(std::string_view text) {
    if (text.size() > 3 && EqualIgnoringCase(FromUtf8(text.substr(0, 3)), u"COM"))
        text.remove_prefix(3);
    return ReadNumberUpTo(text, kSerialPorts).value_or(0);
}

// "", or what is wrong with the words. One serial line is all that an update needs, so that a
// device that is given by its path takes the place of a port.
std::string ReadPort(const std::string& words, Options& options) {
    if (IsDevicePath(words)) {
        options.port = {.number = kSerialPorts, .name = words};
        options.device = words;
        return "";
    }
    const int number = PortNumber(words);
    options.port = {.number = number, .name = "COM" + std::to_string(number)};
    return number != 0 ? "" : "\"" + words + "\" is neither COM1 to COM20 nor the path of a device";
}

// The exit status, or nothing when there is something to do.
std::optional<ExitStatus> ReadOptions(std::vector<std::string> words, Options& options) {
    const SystemWords system = WordsOfThisSystem();
    Arguments arguments("tarnex-flasher",
                        "Loads new firmware into the unit. Without options it opens its window.\n"
                        "\n"
                        "  tarnex-flasher [[--port PORT] --file unit.hex]\n"
                        "  tarnex-flasher --check-only --file unit.hex");
    arguments.EachValue("--port", "PORT",
                        "the port of the unit: COM1 to COM20, or the path of a device such as\n" +
                            system.serial_device +
                            "; without it, the port where the unit was last found",
                        [&](const std::string& words) { return ReadPort(words, options); });
    arguments.EachValue("--file", "FILE", "the firmware, an Intel HEX file",
                        [&](const std::string& path) {
                            options.file = path;
                            return "";
                        });
    arguments.Flag("--check-only", options.check_only,
                   "read the file, say what is in it and what is odd about it, write nothing");
    arguments.Footer(
        "No other program of TarnexComm may run meanwhile: " + system.stop_service +
        ". An update\n"
        "that broke off can be run again, also where the unit does not answer any more.\n"
        "\n"
        "Exit status: 0 done, 64 wrong usage, 65 the file cannot be sent, 66 it cannot be read,\n"
        "69 no such port, unit or display, 74 the line failed, 75 something else has the port or\n"
        "the unit is starting up, 76 the unit answered wrong or fell silent, 77 the port may not\n"
        "be opened or the settings may not be read, 130 interrupted.");
    arguments.OnGiven([&] {
        const bool needs_file = options.check_only || options.port;
        return options.file.empty() && needs_file ? "--file names no file" : "";
    });
    return arguments.Read(std::move(words), std::cout, std::cerr);
}

// Standard output and standard error. On a terminal the last line may be a bar, which makes way
// for other lines.
class Terminal {
  public:
    FlasherOutput Output() {
        return {.say = [this](const std::string& line) { Print(PrintOut, line); },
                .complain = [this](const std::string& line) { Print(PrintError, line); },
                .show_bar = [this](const std::string& bar) { ShowBar(bar); },
                .terminal = StandardOutputIsTerminal()};
    }
    void ShowBar(const std::string& bar) {
        if (bar.empty() && !bar_shown_)
            return;
        PrintOut("\r\x1b[K" + bar.substr(0, TerminalColumns() - 1));
        bar_shown_ = !bar.empty();
    }

  private:
    void Print(bool (*write)(std::string_view), const std::string& line) {
        ShowBar("");
        write(line + "\n");
    }

    bool bar_shown_ = false;
};

// One update on the command line.
class LineProgram {
  public:
    LineProgram() {
        requests_.OnEnd([this] {
            if (flasher_.Interrupt())
                End(kExitInterrupted);
        });
        requests_.OnGone([this] {
            if (!flasher_.MustNotEnd()) // the unit comes before whoever watched
                End(kExitInterrupted);
        });
        requests_.BeforeSystemEnd([this] { return flasher_.BeforeSystemEnd(); });
    }
    int Check(const std::string& file) { return flasher_.Check(file); }
    int Update(const Options& options) {
        if (const ExitStatus status = machine_.TakeSettings(); status != kExitDone)
            return status;
        ports_.SetPaths(Paths(options.device));
        Task<> update = Drive(options.port, options.file);
        update.Start();
        if (!status_)
            machine_.loop.Run();
        terminal_.ShowBar("");
        return *status_;
    }

  private:
    // device: that the update is to use; "": a port of the settings.
    SerialPaths Paths(const std::string& device) const {
        SerialPaths paths = SerialDevicePaths(machine_.settings.device_paths);
        if (!device.empty())
            paths.at(kSerialPorts - 1) = device;
        return paths;
    }
    Task<> Drive(std::optional<UpdatePort> port, std::string file) {
        const int status = co_await flasher_.Update(port, file);
        End(status);
    }
    void End(int status) {
        status_ = status;
        machine_.loop.Stop();
    }

    Machine machine_{"tarnex-flasher"};
    EndRequests requests_{machine_.loop};
    SystemSerialPorts ports_{machine_.loop, {}}; // none until the settings name them
    Terminal terminal_;
    LineFlasher flasher_{
        {.clock = machine_.loop,
         .serial_ports = ports_,
         .files = machine_.files,
         .settings_store = machine_.store,
         .code_page = machine_.code_page,
         .instance_lock = machine_.lock,
         .words = machine_.words,
         .notice = [this](NoticeLevel,
                          const std::string& line) { terminal_.Output().complain(line); },
         .end_process = [] {}},
        terminal_.Output()};
    std::optional<int> status_;
};

} // namespace
} // namespace tarnex

int main(int argc, char** argv) {
    using namespace tarnex;
    Options options;
    if (const auto status = ReadOptions(ProgramArguments(argc, argv), options))
        return *status;
    if (options.check_only)
        return LineProgram().Check(options.file);
    if (!options.file.empty())
        return LineProgram().Update(options);
    return RunToolWindow("tarnex-flasher", "; --port and --file update without one (see --help)",
                         [](const ToolWorld& world, ScreenView& view) {
                             return std::make_unique<FirmwareFlasher>(world, view.Files(),
                                                                      FromUtf8(TARNEX_VERSION));
                         });
}
