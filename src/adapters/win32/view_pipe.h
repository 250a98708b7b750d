#pragma once

#include "adapters/windows/windows_handle.h"

#include <functional>
#include <string>

namespace tarnex {

// The end of the pipe in the process that shows the windows (see adapters/windows/view_pipe.h).
// Reading and writing do not wait for each other.
class ViewPipe {
  public:
    // pipe: for overlapped use.
    explicit ViewPipe(WindowsHandle pipe) : pipe_(std::move(pipe)) {}

    // Sends one packet. What the other end does not want to know any more is lost.
    void Send(const std::string& packet);
    // Calls arrived with each packet, in a thread of its own. Once the other end is gone it ends
    // this process, whatever that is at: nothing here is worth keeping.
    void Listen(std::function<void(std::string packet)> arrived);

  private:
    // False when the pipe is broken.
    bool Read(void* bytes, DWORD size);
    bool Write(const void* bytes, DWORD size);

    WindowsHandle pipe_;
};

} // namespace tarnex
