#include "tools/line_flasher.h"

#include "device/command_sender.h"
#include "device/flash_report.h"
#include "platform/exit_status.h"
#include "tools/update_progress.h"

namespace tarnex {

namespace {

constexpr Duration kProgressPeriod = 250ms;
constexpr int kLinePercents = 10; // without a terminal, a line for so many
constexpr Duration kStartLimit = 60s;
constexpr Duration kStartPoll = 2s;
constexpr Duration kSecondInterrupt = 5s;

int StatusOf(PortStatus status) {
    switch (status) {
    case PortStatus::kForbidden:
        return kExitNoRights;
    case PortStatus::kBusy:
        return kExitTryLater;
    case PortStatus::kOk:
    case PortStatus::kAbsent:
    case PortStatus::kUnusable:
    case PortStatus::kClosed:
    case PortStatus::kLost:
        break;
    }
    return kExitUnavailable;
}

int StatusOf(const FlashProgress& progress) {
    switch (progress.fault) {
    case FlashFault::kNone:
        break;
    case FlashFault::kNoFile:
        return kExitNoInput;
    case FlashFault::kBadLine:
        return kExitData;
    case FlashFault::kNoPort:
        return StatusOf(progress.port_status);
    case FlashFault::kNoLoader:
        return kExitUnavailable;
    case FlashFault::kSilence:
    case FlashFault::kWrongAnswer:
        return kExitWrongAnswer;
    case FlashFault::kLineLost:
    case FlashFault::kStuckLine:
        return kExitIo;
    }
    return kExitDone;
}

} // namespace

LineFlasher::LineFlasher(const ToolWorld& world, FlasherOutput output)
    : world_(world), output_(std::move(output)),
      link_(world, [this] { link_.core.discovery.ConnectClose(); }),
      update_(world_, link_.core, *this),
      progress_timer_(world.clock, kProgressPeriod, [this] { ShowProgress(); }) {}

int LineFlasher::Check(const std::string& file) {
    if (const int status = ReadFile(file); status == kExitNoInput)
        return status;
    const FirmwareFile& read = update_.File();
    if (!read.Sendable()) {
        output_.complain("An update with this file fails.");
        return kExitData;
    }
    output_.say(read.summary.OddCount() == 0
                    ? "Nothing is odd about it."
                    : "An update with this file can succeed all the same.");
    return kExitDone;
}

// Says what is in the file.
int LineFlasher::ReadFile(const std::string& path) {
    update_.Judge(path);
    const FlashProgress& verdict = update_.Standing();
    if (verdict.fault == FlashFault::kNoFile)
        output_.complain(path + ": " + verdict.file_trouble);
    else
        for (const std::string& line : SummaryLines(path, update_.File().summary))
            output_.say(line);
    return StatusOf(verdict);
}

// False when nothing tells where the unit is, which has been said.
bool LineFlasher::FindPort(const std::optional<UpdatePort>& named) {
    if (named) {
        port_ = *named;
        return true;
    }
    const int last = link_.core.discovery.LastPort();
    port_ = {.number = last, .name = "COM" + std::to_string(last)};
    if (last == 0)
        output_.complain("The settings do not tell where the unit was last found: --port is "
                         "missing (try --help)");
    return last != 0;
}

// "COM3 (/dev/ttyUSB0)"; the path alone where the operator gave one.
std::string LineFlasher::PortAndDevice() const {
    const std::string device = world_.serial_ports.DeviceName(port_.number);
    return port_.name + (device.empty() || device == port_.name ? "" : " (" + device + ")");
}

Task<int> LineFlasher::Update(std::optional<UpdatePort> port, std::string file) {
    if (!FindPort(port))
        co_return kExitUsage;
    if (const int status = ReadFile(file); status != kExitDone) {
        output_.complain("The file cannot be sent. The unit was not touched. Take another file.");
        co_return status;
    }
    if (const int status = ClaimPort(); status != kExitDone)
        co_return status;

    output_.say("Greeting the unit on " + PortAndDevice() + " ...");
    const int found = co_await link_.core.discovery.ConnectTo(port_.number);
    if (found == 0)
        output_.say("It does not answer. Perhaps it is without a program: its loader is called.");
    const UpdateEnd end = co_await update_.Write(port_.number);
    progress_timer_.Disable();
    if (end == UpdateEnd::kLeftAlone)
        co_return kExitTryLater;
    Report();
    if (end == UpdateEnd::kDone)
        co_await ShowNewVersion();
    co_return StatusOf(update_.Standing());
}

// The lock and the port are had, or what is in the way has been said.
int LineFlasher::ClaimPort() {
    if (!world_.instance_lock.Acquire()) {
        output_.complain("Another program of TarnexComm runs on this machine, perhaps the "
                         "service. End it first (" +
                         world_.words.stop_service + "), then try again.");
        return kExitTryLater;
    }
    const SerialEvents deaf{.received = [] {}, .lost = [] {}};
    const PortStatus status = world_.serial_ports.Open(port_.number, LineSettings(), deaf).status;
    if (status == PortStatus::kOk)
        return kExitDone;
    output_.complain(PortAndDevice() + ": " + PortTroubleInEnglish(status));
    return StatusOf(status);
}

// False when the unit does not come up.
Task<bool> LineFlasher::UnitAnswers() {
    const bool started = co_await UnitStarted();
    if (!started) {
        output_.complain("The unit is starting up and does not get ready. Try again later. It was "
                         "not touched.");
        co_return false;
    }
    CommandSet& commands = link_.core.commands;
    const Text name = co_await commands.RDName();
    output_.say("name     " + ToUtf8(name));
    const Text version = co_await commands.ChkVer();
    output_.say("version  " + ToUtf8(version));
    const Text serial = co_await commands.RDSerial();
    output_.say("serial   " + ToUtf8(serial));
    output_.say("Restarting the unit ...");
    co_return true;
}

void LineFlasher::LoaderCalled() {
    began_ = world_.clock.Now();
    progress_timer_.Enable();
}

Task<bool> LineFlasher::UnitStarted() {
    const Duration limit = world_.clock.Now() + kStartLimit;
    for (;;) {
        const Text greeting = co_await link_.core.discovery.HelloTarnex();
        if (greeting == kOk)
            co_return true;
        if (world_.clock.Now() >= limit)
            co_return false;
        co_await Sleep(world_.clock, kStartPoll);
    }
}

Task<> LineFlasher::ShowNewVersion() {
    output_.say("The unit starts up ...");
    const Duration limit = world_.clock.Now() + kStartLimit;
    int found = 0;
    while (found == 0 && world_.clock.Now() < limit) {
        co_await Sleep(world_.clock, kStartPoll);
        found = co_await link_.core.discovery.ConnectTo(port_.number);
    }
    bool started = false;
    if (found != 0)
        started = co_await UnitStarted();
    if (started) {
        const Text version = co_await link_.core.commands.ChkVer();
        output_.say("version  " + ToUtf8(version));
    } else {
        output_.complain("The unit has taken the update and does not answer yet. Look after it.");
    }
    link_.core.discovery.ConnectClose();
}

void LineFlasher::Report() {
    if (output_.terminal)
        output_.show_bar("");
    const FlashProgress& progress = update_.Standing();
    const auto took = std::chrono::round<std::chrono::seconds>(world_.clock.Now() - began_);
    if (progress.fault == FlashFault::kNone) {
        output_.say("Updated: " + std::to_string(progress.bytes) + " bytes in " +
                    DurationText(took) + ".");
        return;
    }
    output_.complain("The update failed after " + DurationText(took) + ".");
    const std::string again = UpdateCommand(port_.name, update_.File().path, world_.words.quote);
    for (const std::string& line : FailureInEnglish(progress, again))
        output_.complain(line);
}

void LineFlasher::ShowProgress() {
    const FlashProgress& progress = update_.Standing();
    const bool new_step = std::exchange(shown_step_, progress.step) != progress.step;
    const Duration step_time = update_.StepTime();
    const long total = update_.File().summary.Bytes();
    const std::string bar = ProgressBar(progress, total, step_time);
    if (output_.terminal) {
        output_.show_bar(bar);
    } else if (progress.step != FlashStep::kWrite) {
        if (new_step && !bar.empty())
            output_.say(bar);
    } else if (new_step || Percent(progress, total) >= shown_percent_ + kLinePercents) {
        shown_percent_ = Percent(progress, total) / kLinePercents * kLinePercents;
        output_.say(ProgressLine(progress, total, step_time));
    }
}

bool LineFlasher::Interrupt() {
    const Duration now = world_.clock.Now();
    if (!MustNotEnd() || (interrupted_ && now - *interrupted_ <= kSecondInterrupt))
        return true;
    interrupted_ = now;
    output_.complain(
        "The unit is being written: without the rest it does not work any more, until "
        "an update succeeds. Press Ctrl-C again within 5 seconds to end all the same.");
    return false;
}

std::string LineFlasher::BeforeSystemEnd() {
    if (!MustNotEnd())
        return "";
    output_.complain("The system is about to end and was told to wait: the unit is being written, "
                     "and without the rest it does not work any more.");
    return "TarnexComm is writing the unit's firmware. Without the rest the unit does not work any "
           "more: please wait.";
}

} // namespace tarnex
