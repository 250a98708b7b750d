#include "simulator/simulated_unit.h"

#include "simulator/unit_protocol.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace tarnex {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kFrameStart = "~TX:";
constexpr std::string_view kNoise = "\x81#~x\xFE?&\x07";
constexpr std::size_t kLongestLine = 4096;
constexpr std::size_t kSentKept = 1000;
constexpr Duration kHalfGap = 100ms; // well beyond the 20 ms after which the PC reads a line
constexpr Duration kGsmStart = 1s;

std::size_t IndexOf(const ProtocolCommand& command) {
    return std::size_t(&command - ProtocolCommands().data());
}

} // namespace

SimulatedUnit::SimulatedUnit(Clock& clock)
    : calls_(clock), loader_(clock, {.send =
                                         [this](std::string_view bytes) {
                                             if (line_mode_ == LineMode::kLoader)
                                                 EmitRaw(bytes);
                                         },
                                     .taken = [this] { calls_.CancelAll(); },
                                     .ended = [this] { TakeNewProgram(); }}),
      counts_(ProtocolCommands().size()) {}

void SimulatedUnit::Opened(const LineSettings& settings) {
    if (settings.baud == 19200 && settings.parity == 'N')
        line_mode_ = LineMode::kText;
    else if (settings.baud == 38400 && settings.parity == 'E')
        line_mode_ = LineMode::kLoader;
    else
        line_mode_ = LineMode::kOther;
    input_.clear();
}

void SimulatedUnit::Received(std::string_view bytes) {
    if (line_mode_ == LineMode::kLoader && !Faults.Silent)
        loader_.Received(bytes);
    else if (line_mode_ == LineMode::kText && !loader_.InCharge())
        HearText(bytes);
}

void SimulatedUnit::HearText(std::string_view bytes) {
    input_ += bytes;
    std::size_t end;
    while ((end = input_.find(kLineEnd)) != std::string::npos) {
        const std::string line = input_.substr(0, end);
        input_.erase(0, end + kLineEnd.size());
        Hear(line);
    }
    if (input_.size() > kLongestLine)
        input_.clear();
}

void SimulatedUnit::Hear(std::string_view line) {
    if (!line.starts_with(kFrameStart))
        return;
    line.remove_prefix(kFrameStart.size());
    on_command_(line);

    const auto [command, name, argument] = ParseProtocolLine(line);
    if (command)
        ++counts_[IndexOf(*command)];
    if (Faults.Silent)
        return;
    if (const auto instead = Faults.Instead.find(name); instead != Faults.Instead.end()) {
        if (!instead->second.empty())
            Answer(instead->second);
    } else if (booting_) {
        if (command && command->action == ProtocolAction::kGreet)
            Answer("Init");
    } else if (command) {
        Obey(*command, argument);
    } else {
        Answer("ERROR");
    }
}

void SimulatedUnit::Obey(const ProtocolCommand& command, std::string_view argument) {
    switch (command.action) {
    case ProtocolAction::kGreet:
        return Answer("Hello,sever");
    case ProtocolAction::kReportSignal:
        return calls_.After(Times.Signal, [this] { ReportSignal(); });
    case ProtocolAction::kStore:
        Memory.*command.field = argument;
        return Answer("OK");
    case ProtocolAction::kSet:
        Memory.*command.field = command.text;
        return Answer("OK");
    case ProtocolAction::kTell:
        return Answer(std::string(command.text) + Memory.*command.field +
                      (command.text.empty() ? "" : ")"));
    case ProtocolAction::kFreeDisplay:
        Memory.Lcd1.clear();
        Memory.Lcd2.clear();
        return Answer("OK");
    case ProtocolAction::kSendSms:
        return SendSms(command, argument);
    case ProtocolAction::kReset:
        Answer("RESET OK");
        return calls_.After(Times.Answer, [this] { Boot(); });
    }
}

void SimulatedUnit::SendSms(const ProtocolCommand& command, std::string_view hex) {
    const SentSms sms{.number_index = command.name.back() - '0',
                      .telephone_number = Memory.*command.field,
                      .text = FromHexText(hex)};
    sent_.push_back(sms);
    if (sent_.size() > kSentKept)
        sent_.pop_front();
    Answer("OK");
    const SmsOutcome outcome = sms.telephone_number.empty() ? SmsOutcome::kFailed : Outcome;
    calls_.After(Times.Sms, [this, outcome] { ReportOutcome(outcome); });
    on_sent_(sms);
}

void SimulatedUnit::ReportOutcome(SmsOutcome outcome) {
    switch (outcome) {
    case SmsOutcome::kSent:
        return Say("TX:SENDOK");
    case SmsOutcome::kFailed:
        return Say("TX:SENDFAIL");
    case SmsOutcome::kLost:
        return;
    }
}

void SimulatedUnit::Answer(std::string_view text) {
    std::string chunk;
    if (Faults.Noise)
        chunk.append(kNoise);
    else
        chunk.append("TX:").append(text);
    if (!Faults.NoLineEnd)
        chunk.append(kLineEnd);

    if (Faults.TwoChunks) {
        const std::size_t half = chunk.size() / 2;
        calls_.After(Times.Answer + kHalfGap, [this, rest = chunk.substr(half)] { Emit(rest); });
        chunk.resize(half);
    }
    calls_.After(Times.Answer, [this, chunk] { Emit(chunk); });
}

// At other settings of the line it would arrive as garbage.
void SimulatedUnit::Emit(std::string_view text) {
    if (line_mode_ == LineMode::kText)
        EmitRaw(text);
}

void SimulatedUnit::EmitRaw(std::string_view bytes) {
    if (line_ && !Faults.Silent)
        line_->Send(bytes);
}

void SimulatedUnit::Say(std::string_view line) {
    Emit(std::string(line) + std::string(kLineEnd));
}

void SimulatedUnit::Boot() {
    calls_.CancelAll();
    input_.clear();
    Memory.Lcd1.clear();
    Memory.Lcd2.clear();
    Memory.PcAlarm.clear();
    booting_ = true;
    loader_.Start(std::min(Times.Loader, Times.Boot),
                  {.answer = Times.Answer, .erase = Times.Erase});
    if (loader_.InCharge())
        return;
    calls_.After(Times.Boot - kGsmStart, [this] { Say("TX:InitSysOk"); });
    calls_.After(Times.Boot, [this] {
        booting_ = false;
        Say("TX:InitGsmOk");
    });
}

void SimulatedUnit::TakeNewProgram() {
    if (const std::optional<std::string> version = loader_.ProgramVersion())
        Memory.Version = *version;
    Boot();
}

bool SimulatedUnit::ReceiveSms(TextView number, TextView text) {
    if (Faults.Silent || booting_)
        return false;
    Say(MakeReceivedRecord(number, calls_.clock().Calendar(), text));
    return true;
}

void SimulatedUnit::SendNoise() {
    EmitRaw(std::string(kNoise) + std::string(kLineEnd));
}

void SimulatedUnit::LosePower() {
    Memory.AlarmState = "1";
    Say("TX:Alarm(AC)");
}

void SimulatedUnit::RegainPower() {
    Memory.AlarmState = "0";
    Say("TX:Alarm(ACOK)");
}

void SimulatedUnit::LoseConnection() {
    Say("TX:Alarm(CON)");
}

void SimulatedUnit::LoseCard() {
    Say("TX:NOSimCard");
}

void SimulatedUnit::ReportSignal() {
    if (!booting_)
        Say("TX:TXCSQ(" + std::to_string(Signal) + ",0)");
}

long SimulatedUnit::Count(std::string_view name) const {
    for (const ProtocolCommand& command : ProtocolCommands())
        if (command.name == name)
            return counts_[IndexOf(command)];
    throw std::out_of_range("the unit has no command " + std::string(name));
}

} // namespace tarnex
