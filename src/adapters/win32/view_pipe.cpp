#include "adapters/win32/view_pipe.h"

#include "adapters/windows/view_pipe.h"
#include "ui/form_wire.h"

#include <thread>

namespace tarnex {

namespace {

// An operation on the pipe that is waited for here, and no other one.
class Operation {
  public:
    Operation() { state_.hEvent = event_.Get(); }

    OVERLAPPED* State() { return &state_; }
    // How many bytes; 0 when it has failed.
    DWORD Finish(HANDLE pipe, BOOL begun) {
        DWORD done = 0;
        if (!begun && GetLastError() != ERROR_IO_PENDING)
            return 0;
        return GetOverlappedResult(pipe, &state_, &done, TRUE) ? done : 0;
    }

  private:
    WindowsHandle event_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    OVERLAPPED state_{};
};

} // namespace

bool ViewPipe::Read(void* bytes, DWORD size) {
    for (auto* at = static_cast<char*>(bytes); size > 0;) {
        Operation reading;
        const DWORD done =
            reading.Finish(pipe_.Get(), ReadFile(pipe_.Get(), at, size, nullptr, reading.State()));
        if (done == 0)
            return false;
        at += done;
        size -= done;
    }
    return true;
}

bool ViewPipe::Write(const void* bytes, DWORD size) {
    for (const auto* at = static_cast<const char*>(bytes); size > 0;) {
        Operation writing;
        const DWORD done =
            writing.Finish(pipe_.Get(), WriteFile(pipe_.Get(), at, size, nullptr, writing.State()));
        if (done == 0)
            return false;
        at += done;
        size -= done;
    }
    return true;
}

void ViewPipe::Send(const std::string& packet) {
    const auto size = static_cast<PacketSize>(packet.size());
    std::string sent(reinterpret_cast<const char*>(&size), sizeof size);
    sent += packet;
    Write(sent.data(), static_cast<DWORD>(sent.size()));
}

void ViewPipe::Listen(std::function<void(std::string packet)> arrived) {
    std::thread([this, arrived = std::move(arrived)] {
        PacketSize size = 0;
        while (Read(&size, sizeof size) && size <= kLongestPacket) {
            std::string packet(size, '\0');
            if (!Read(packet.data(), size))
                break;
            arrived(std::move(packet));
        }
        TerminateProcess(GetCurrentProcess(), 0);
    }).detach();
}

} // namespace tarnex
