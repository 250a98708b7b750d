#pragma once

#include "device/command_sender.h"
#include "device/response_reader.h"

namespace tarnex {

struct Command;

// Every operation on the unit. Each sends one command and returns its result: "OK" or the text
// asked for, kFailed when the unit did not answer in time or answered something else.
class CommandSet {
  public:
    // The parts must outlive the set.
    CommandSet(Clock& clock, CommandSender& sender, ResponseReader& reader, DeviceTrace& trace,
               DebugLists& lists);

    // Asks for the signal quality without waiting; the answer changes CSQ later. The value known
    // so far as decimal text: "-1" for a silent unit, "0" before the first report, "-2" when the
    // hardware is gone.
    Task<Text> RDCSQ();

    Task<Text> LCD(const Text& text, const Text& line); // line "1", "2", else: release the display
    Task<Text> RDALARM();
    Task<Text> PCAlarm(const Text& text);
    Task<Text> PCAlarmOff();
    Task<Text> ChkVer();
    Task<Text> RDNO(const Text& index); // index "1", else the second number
    Task<Text> WRNO(const Text& number, const Text& index);
    Task<Text> WRDT(const Text& text); // communication alarm time
    Task<Text> RDDT();
    Task<Text> WRAT(const Text& text); // number of sends
    Task<Text> RDAT();
    Task<Text> TXPWR(const Text& mode); // "On", else off
    Task<Text> TXCON(const Text& mode); // "On", else off
    Task<Text> WRCSCA(const Text& number);
    Task<Text> RDCSCA();
    // Waits until the command is on the line, and for no answer; always "".
    Task<Text> RESET_NOBACK();
    Task<Text> RESET();
    Task<Text> WRName(const Text& name);
    Task<Text> RDName();
    Task<Text> NameMode(const Text& mode); // "On", "Off", "Get"; else nothing is sent: ""
    Task<Text> RDSerial();
    Task<Text> WRSerial(const Text& serial);
    // Hands the unit an SMS for the number stored in it: target 1, else the second one.
    Task<Text> SENDSMS(const Text& text, int target);

    // Asks for the signal quality every second while it is enabled; off unless staff switch it on.
    Timer CSQTimer;

  private:
    Task<Text> Run(const Command& command, Text argument = {});
    Task<> TraceCSQ();

    CommandSender& sender_;
    ResponseReader& reader_;
    DeviceTrace& trace_;
    DebugLists& lists_;
};

} // namespace tarnex
