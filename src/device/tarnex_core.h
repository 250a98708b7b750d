#pragma once

#include "device/discovery.h"
#include "device/sms_modem.h"

namespace tarnex {

// What the device link is built from; all of it must outlive the link.
struct TarnexCoreParts {
    Clock& clock;
    SerialPorts& ports;
    const CodePage& code_page;
    const MyIniFile& ini;
    DebugLists& lists;
    OperatorNotices& notices;
    // The hardware behind the open port went away. Never called during a scan, which only fails
    // the port at hand, and not during an update, which then ends in failure.
    std::function<void()> hardware_lost;
    MainJobNotices* main_job = nullptr; // nullptr: it is not watched
};

// The line to the unit: the open port, what is read off it and what is sent over it.
struct UnitLine {
    // firmware is told of bytes while it has the line, sms of the fate of a send, and lost when the
    // hardware went away. None of them is called before the line is used.
    UnitLine(const TarnexCoreParts& parts, FirmwareLink& firmware,
             std::function<void(TextView)> sms, std::function<void()> lost);

    DeviceTrace trace;
    LineBuffer rx_buffer;
    CommPort port;
    AnswerWait answer;
    ResponseReader reader;
    CommandSender sender;
};

// The device link: owns the serial port and is the only way to the unit. The line is a base so that
// it is there before, and gone after, all that works on it.
class TarnexCore : private UnitLine {
  public:
    explicit TarnexCore(TarnexCoreParts parts);

    // Resets the state of the link. The last signal quality stays, and an open port stays open.
    void Init();
    // "On" and "Off" switch the link's own debug trace; any other mode leaves it. Whether it is on
    // now.
    bool OCXDebug(TextView mode);

    // The oldest state word of the unit, or kNoData.
    Text GetComFifo() { return reader.GetComFifo(); }

    FirmwareLink firmware;
    CommandSet commands;
    SMSModem sms;
    Discovery discovery;
    // ComTimer, ComBadTimer, TarnexLostTimer, CSQTimer, SMSTimer, FirmComTimer.
    TimerList timers;

  private:
    void HardwareLost();

    std::function<void()> hardware_lost_;
};

} // namespace tarnex
