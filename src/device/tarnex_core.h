#pragma once

#include "device/discovery.h"
#include "device/sms_modem.h"

namespace tarnex {

// The device link: owns the serial port and is the only way to the unit.
class TarnexCore {
  public:
    struct Parts {
        Clock& clock;
        SerialPorts& ports;
        const CodePage& code_page;
        const MyIniFile& ini;
        DebugLists& lists;
        OperatorNotices& notices;
        // The hardware behind the open port went away. Never called during a scan, which only
        // fails the port at hand, and not during an update, which then ends in failure.
        std::function<void()> hardware_lost;
    };
    // The parts must outlive the core.
    explicit TarnexCore(Parts parts);

    // Resets the state of the link. The last signal quality stays, and an open port stays open.
    void Init();
    // "On" and "Off" switch the link's own debug trace; any other mode leaves it. Whether it is on
    // now.
    bool OCXDebug(TextView mode);

  private: // in the order in which they use each other
    Parts parts_;
    DeviceTrace trace_;
    LineBuffer rx_buffer_;
    CommPort port_;

  public:
    FirmwareLink firmware;

  private:
    AnswerWait answer_;
    ResponseReader reader_;
    CommandSender sender_;

  public:
    CommandSet commands;
    SMSModem sms;
    Discovery discovery;
    // ComTimer, ComBadTimer, TarnexLostTimer, CSQTimer, SMSTimer, FirmComTimer.
    TimerList timers;

    Text GetComFifo() { return reader_.GetComFifo(); }

  private:
    void HardwareLost();
};

} // namespace tarnex
