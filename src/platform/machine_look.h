#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tarnex {

// A device that may be a serial port, as far as the machine tells; "" is "nothing", or "not known
// here".
struct PortLook {
    bool there = false;
    std::string device{};    // without links
    std::string what{};      // sits there: "FTDI FT232R, serial number A10KZ4RT"
    std::string held_by{};   // the program that has it open: "process 812 (minicom)"
    std::string forbidden{}; // why the service may not open it
    bool probed = false;     // a modem manager runs that sends it commands
};

// A program that holds something.
struct Holder {
    long process = 0;   // 0: nobody is known
    std::string text{}; // as held_by
};

// What a command for the operator asks the machine. Nothing here changes anything, and no port is
// opened.
class MachineLook {
  public:
    virtual ~MachineLook() = default;

    virtual PortLook Port(const std::string& device) = 0;
    // The serial ports that are there, by the names that stay.
    virtual std::vector<std::string> Ports() = 0;
    // Who has a lock on the file.
    virtual Holder LockHolder(const std::string& path) = 0;
    // Why the user that the service is installed for may not read the file, and what to do; ""
    // where he may. Only the superuser can find that out: "" for everybody else.
    virtual std::string KeptFromService(const std::string& path) = 0;
    // Who keeps others from binding a UDP port on that IPv4 address, as held_by; "" for nobody that
    // is known; of a program of another user perhaps no more than "a program of backup".
    virtual std::string PortHolder(const std::string& address, std::uint16_t port) = 0;
    // What is wrong with the clock.
    virtual std::string ClockTrouble() = 0;
};

} // namespace tarnex
