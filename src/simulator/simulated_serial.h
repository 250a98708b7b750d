#pragma once

#include "platform/serial_port.h"
#include "simulator/serial_device.h"

#include <array>
#include <optional>

namespace tarnex {

class Clock;

// The serial ports COM1 to COM20 of a machine without hardware. All are absent at first. The line
// itself takes no time: bytes are at the other end in the instant in which they are sent.
class SimulatedSerialPorts : public SerialPorts {
  public:
    // clock must outlive the ports and everything opened on them.
    explicit SimulatedSerialPorts(Clock& clock);
    ~SimulatedSerialPorts() override; // the opened ports must be gone

    OpenedPort Open(int number, const LineSettings& settings, SerialEvents events) override;
    std::string DeviceName(int number) const override; // "COM7" unless it is absent

    // number is 1 to 20 in everything below.

    // Puts a device on a port that has none, which is usable from now on. The device must stay
    // until it is unplugged or until no program has the port open any more.
    void Plug(int number, SerialDevice& device);
    // Takes the port away, with its device if it has one. An open port is lost.
    void Unplug(int number);
    // What the next Open() meets. kOk without a device is a port on which nobody answers.
    void SetStatus(int number, PortStatus status);
    // While held, written bytes stay in the output buffer; then they go out together.
    void HoldOutput(int number, bool hold);

    // The line settings of the program that has the port open.
    std::optional<LineSettings> OpenSettings(int number) const;
    // What was written to the port since ForgetWritten(); of more than 64 KiB only the last half
    // of them is kept.
    const std::string& Written(int number) const;
    void ForgetWritten(int number);

  private:
    class Port;
    struct Slot;

    Slot& At(int number) const;

    Clock& clock_;
    std::unique_ptr<std::array<Slot, kSerialPorts>> slots_;
};

} // namespace tarnex
