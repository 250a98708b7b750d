#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tarnex {

struct LineSettings {
    int baud = 19200;
    char parity = 'N'; // 'N' none, 'E' even, 'O' odd
    int data_bits = 8;
    int stop_bits = 1;
};

enum class PortStatus {
    kOk,
    kAbsent,    // no such port on this machine
    kForbidden, // the port is there, this user may not open it
    kBusy,      // another program holds it
    kUnusable,  // it is there and cannot be set up as a serial line
    kClosed,    // not open (any more)
    kLost,      // the hardware behind an open port went away
};

// One open serial line. Destroying it closes the port.
class SerialPort {
  public:
    virtual ~SerialPort() = default;

    // Queues bytes for the line; returns at once. kOk, or kLost: also when the line takes nothing
    // any more and 1 MiB waits already.
    virtual PortStatus Write(std::string_view bytes) = 0;
    // Bytes written that have not left the machine yet.
    virtual std::size_t OutBufferCount() const = 0;
    // Received bytes that wait; at most 1024, further ones stay in the driver.
    virtual std::size_t InBufferCount() const = 0;
    // Takes at most limit waiting bytes, all of them in one step.
    virtual std::string Read(std::size_t limit) = 0;
};

// What an open port tells its user. Called from the loop, never from within a call on the port;
// the user may destroy the port there.
struct SerialEvents {
    std::function<void()> received; // further bytes wait
    std::function<void()> lost;     // once: the hardware went away; the port is of no more use
};

struct OpenedPort {
    std::unique_ptr<SerialPort> port; // nullptr unless status is kOk
    PortStatus status = PortStatus::kOk;
};

// The serial ports that there can be: COM1 to COM20.
inline constexpr int kSerialPorts = 20;
// The device of each port; element i belongs to COM<i + 1>.
using SerialPaths = std::array<std::string, kSerialPorts>;

class SerialPorts {
  public:
    virtual ~SerialPorts() = default;

    // Opens COM<number> exclusively, raw, with empty buffers. A number outside 1 to
    // kSerialPorts is absent.
    virtual OpenedPort Open(int number, const LineSettings& settings, SerialEvents events) = 0;
    // The system's name of COM<number> for people ("/dev/ttyUSB0"); "" when it has none.
    virtual std::string DeviceName(int number) const = 0;
};

} // namespace tarnex
