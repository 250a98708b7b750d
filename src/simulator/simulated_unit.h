#pragma once

#include "platform/text.h"
#include "simulator/call_group.h"
#include "simulator/serial_device.h"
#include "simulator/unit_loader.h"
#include "simulator/unit_protocol.h"

#include <deque>
#include <map>
#include <string>
#include <vector>

namespace tarnex {

struct ProtocolCommand;

// What is wrong with a unit. Nothing is, by default.
struct UnitFaults {
    bool Silent = false;    // hears and counts commands, obeys none, says nothing
    bool Noise = false;     // a line of garbage in place of every answer
    bool TwoChunks = false; // every answer comes in two halves, 100 ms apart
    bool NoLineEnd = false; // no line end behind an answer
    // By command name: what to answer (without "TX:") in place of obeying; "" for no answer.
    // Instead["WRNO1"] = "ERROR" refuses to store the first number.
    std::map<std::string, std::string, std::less<>> Instead{};
};

// How long the unit takes; each from the command on, Boot and Loader from the restart on.
struct UnitTimes {
    Duration Answer = 5ms;
    Duration Signal = 20ms; // RDCSQ to its report
    Duration Sms = 4s;      // SENDSMS1, SENDSMS2 to the report of the outcome
    Duration Boot = 10s;
    Duration Loader = 5s; // that the loader listens, at most as long as Boot
    Duration Erase = 1s;  // of the program, by the loader
};

enum class SmsOutcome {
    kSent,   // "TX:SENDOK"
    kFailed, // "TX:SENDFAIL"
    kLost,   // no report
};

struct SentSms {
    int number_index; // 1 or 2
    std::string telephone_number;
    Text text;
};

// A GSM alarm unit on a serial line. It works at 19200,N,8,1, its loader at 38400,E,8,1, and hears
// nothing at other settings.
// New, it is healthy and started up; it keeps time on the clock alone, so that it can stand on a
// simulated line or on a real one.
class SimulatedUnit : public SerialDevice {
  public:
    // clock must outlive the unit.
    explicit SimulatedUnit(Clock& clock);

    void Plugged(SerialLine& line) override { line_ = &line; }
    void Unplugged() override { line_ = nullptr; }
    void Opened(const LineSettings& settings) override;
    void Received(std::string_view bytes) override;

    // May be changed at any time.
    UnitFaults Faults;
    UnitTimes Times;
    UnitMemory Memory;
    // Rewrites the program after a restart. Memory.Version is then what the program says.
    UnitLoader& Loader() { return loader_; }
    SmsOutcome Outcome = SmsOutcome::kSent; // of the sends accepted from now on
    int Signal = 20;                        // what RDCSQ reports

    // What happens to the unit. It tells nothing of it while it is silent or unplugged.

    // Restarts: the greeting is answered "Init" and nothing else at all, until "TX:InitGsmOk" at
    // the end of the boot time, a second after "TX:InitSysOk". A unit without program stays in its
    // loader.
    void Boot();
    bool Booting() const { return booting_; }
    // An SMS from number arrives, and is lost while the unit is silent or starting. False then.
    bool ReceiveSms(TextView number, TextView text);
    void LosePower();
    void RegainPower();
    void LoseConnection(); // the connection alarm
    void LoseCard();
    void ReportSignal();
    void SendNoise(); // a line of garbage, at any settings of the line
    // Sends any one line as its own report, at once; the line end is added.
    void Say(std::string_view line);

    // How many commands of this name were heard ("WRNO1"); throws std::out_of_range where the unit
    // has no such command.
    long Count(std::string_view name) const;
    // The last 1000 messages that the unit agreed to send, whatever their outcome.
    const std::deque<SentSms>& Sent() const { return sent_; }

    // Called for every command line heard, without "~TX:", before the unit obeys.
    void OnCommand(std::function<void(std::string_view)> fn) { on_command_ = std::move(fn); }
    // Called for every message that the unit agrees to send.
    void OnSent(std::function<void(const SentSms&)> fn) { on_sent_ = std::move(fn); }

  private:
    void HearText(std::string_view bytes);
    void Hear(std::string_view line);
    void Obey(const ProtocolCommand& command, std::string_view argument);
    void SendSms(const ProtocolCommand& command, std::string_view hex);
    void ReportOutcome(SmsOutcome outcome);
    void Answer(std::string_view text);
    void Emit(std::string_view text);
    void EmitRaw(std::string_view bytes);
    void TakeNewProgram();

    CallGroup calls_;
    SerialLine* line_ = nullptr;
    enum class LineMode { kText, kLoader, kOther };
    LineMode line_mode_ = LineMode::kText;
    UnitLoader loader_;
    bool booting_ = false;
    std::string input_;
    std::vector<long> counts_; // a command each
    std::deque<SentSms> sent_;
    std::function<void(std::string_view)> on_command_ = [](std::string_view) {};
    std::function<void(const SentSms&)> on_sent_ = [](const SentSms&) {};
};

} // namespace tarnex
