#pragma once

#include "adapters/asio/asio_loop.h"
#include "platform/timer.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tarnex {

// The device's end of a serial line for other programs of this machine: a pseudo terminal.
class PtyLine {
  public:
    // received is called from the loop with what a program wrote.
    PtyLine(AsioLoop& loop, std::function<void(std::string_view)> received);
    ~PtyLine();

    // Makes a new terminal. "", or what stands in the way.
    std::string Open();
    // Takes the terminal away: a program that has it open sees a hang-up.
    void Close();
    bool IsOpen() const { return terminal_ != nullptr; }
    // "/dev/pts/5"; "" while closed.
    std::string DeviceName() const;
    // The speed that the programs' end is set to, 19200 at first; 0 for an unusual one. A terminal
    // keeps no parity.
    int Baud() const;
    // What the terminal cannot take, since nobody reads it, is lost.
    void Send(std::string_view bytes);

  private:
    class Terminal;

    AsioLoop& loop_;
    std::shared_ptr<const std::function<void(std::string_view)>> received_;
    std::shared_ptr<Terminal> terminal_;
    Timer hold_timer_;
};

} // namespace tarnex
