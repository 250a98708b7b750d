#include "adapters/system/view_process.h"

#include "adapters/asio/loop_core.h"
#include "adapters/system/process.h"
#include "adapters/windows/view_pipe.h"
#include "adapters/windows/windows_handle.h"
#include "adapters/windows/windows_text.h"
#include "ui/form_wire.h"

#include <deque>

#include <asio/read.hpp>
#include <asio/windows/object_handle.hpp>
#include <asio/windows/stream_handle.hpp>
#include <asio/write.hpp>

namespace tarnex {

namespace {

constexpr DWORD kPipeRoom = 64 * 1024; // bytes; a longer packet waits for the reader in parts

// A service has a window station of its own, which no screen shows.
bool DesktopIsSeen() {
    USEROBJECTFLAGS flags{};
    return GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags,
                                     nullptr) &&
           (flags.dwFlags & WSF_VISIBLE) != 0;
}

struct PipeEnds {
    WindowsHandle ours;
    WindowsHandle its; // inherited by those who are given it
};

// Without ends where that fails. Only one can ever connect to the pipe, which this process has done
// before anybody else learns of it.
PipeEnds MakePipe() {
    LARGE_INTEGER ticks{};
    QueryPerformanceCounter(&ticks);
    const std::wstring name = L"\\\\.\\pipe\\tarnexcomm-" + std::to_wstring(ThisProcess()) + L"-" +
                              std::to_wstring(ticks.QuadPart);
    PipeEnds ends;
    ends.ours = WindowsHandle(CreateNamedPipeW(
        name.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
        PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, kPipeRoom, kPipeRoom, 0, nullptr));
    if (!ends.ours)
        return ends;
    SECURITY_ATTRIBUTES inherited{
        .nLength = sizeof inherited, .lpSecurityDescriptor = nullptr, .bInheritHandle = TRUE};
    ends.its = WindowsHandle(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, &inherited,
                                         OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr));
    return ends;
}

// What a process inherits: one handle and no other, neither the line to the unit nor a link.
class Inheritance {
  public:
    explicit Inheritance(HANDLE handle) : handle_(handle) {
        SIZE_T size = 0;
        InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        list_.resize(size);
        InitializeProcThreadAttributeList(List(), 1, 0, &size);
        UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, &handle_,
                                  sizeof handle_, nullptr, nullptr);
    }
    ~Inheritance() { DeleteProcThreadAttributeList(List()); }
    Inheritance(const Inheritance&) = delete;
    Inheritance& operator=(const Inheritance&) = delete;

    LPPROC_THREAD_ATTRIBUTE_LIST List() {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(list_.data());
    }

  private:
    HANDLE handle_;
    std::string list_;
};

// This program once more; no handle where that fails. It has no console, and so none of its
// signals.
WindowsHandle StartThisProgram(HANDLE pipe) {
    Inheritance inheritance(pipe);
    STARTUPINFOEXW start{};
    start.StartupInfo.cb = sizeof start;
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES; // none
    start.lpAttributeList = inheritance.List();
    const std::wstring program = ToWide(ThisProgram());
    std::wstring line = L"\"" + program + L"\" " + ToWide(kShowWindows) + L" " +
                        ToWide(TARNEX_VERSION) + L" " +
                        std::to_wstring(reinterpret_cast<std::uintptr_t>(pipe));
    PROCESS_INFORMATION made{};
    if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE,
                        EXTENDED_STARTUPINFO_PRESENT | DETACHED_PROCESS, nullptr, nullptr,
                        &start.StartupInfo, &made))
        return {};
    CloseHandle(made.hThread);
    return WindowsHandle(made.hProcess);
}

std::string HowItEnded(DWORD status) {
    constexpr DWORD kFaults = 0xC0000000; // and above: the system has ended it
    char words[40];
    std::snprintf(words, sizeof words, status >= kFaults ? "by fault 0x%lX" : "with status %lu",
                  status);
    return std::string("the program of the windows has ended ") + words;
}

// Everything that asio's handlers use lives as long as the last of them.
class Link : public std::enable_shared_from_this<Link> {
  public:
    Link(AsioLoop& loop, ViewProcess::Handlers handlers)
        : pipe_(loop.core().io), process_(loop.core().io), handlers_(std::move(handlers)) {}

    // Takes both over.
    void Begin(WindowsHandle pipe, WindowsHandle process) {
        pipe_.assign(pipe.Get());
        pipe.Release();
        process_.assign(process.Get());
        process.Release();
        process_.async_wait([self = shared_from_this()](const asio::error_code& error) {
            if (error)
                return;
            self->exited_ = true;
            self->TellEnd();
        });
        AwaitSize();
    }
    bool Send(const std::string& packet) {
        if (broken_ || packet.size() > kLongestPacket)
            return false;
        const auto size = static_cast<PacketSize>(packet.size());
        queue_.emplace_back(reinterpret_cast<const char*>(&size), sizeof size).append(packet);
        if (queue_.size() == 1)
            SendNext();
        return true;
    }
    void Kill() {
        if (!exited_)
            TerminateProcess(process_.native_handle(), 1);
    }
    // The user is gone.
    void Abandon() {
        handlers_ = {};
        Kill();
        asio::error_code ignored;
        pipe_.close(ignored);
        process_.close(ignored);
    }

  private:
    void AwaitSize() {
        asio::async_read(pipe_, asio::buffer(&size_, sizeof size_),
                         [self = shared_from_this()](const asio::error_code& error, std::size_t) {
                             if (error || self->size_ > kLongestPacket)
                                 self->Break();
                             else
                                 self->AwaitPacket();
                         });
    }
    void AwaitPacket() {
        packet_.resize(size_);
        asio::async_read(pipe_, asio::buffer(packet_),
                         [self = shared_from_this()](const asio::error_code& error, std::size_t) {
                             if (error) {
                                 self->Break();
                                 return;
                             }
                             if (const auto arrived = self->handlers_.arrived)
                                 arrived(self->packet_);
                             if (self->handlers_.arrived)
                                 self->AwaitSize();
                         });
    }
    void SendNext() {
        asio::async_write(pipe_, asio::buffer(queue_.front()),
                          [self = shared_from_this()](const asio::error_code& error, std::size_t) {
                              if (error)
                                  return; // that it is broken is seen by the reader
                              self->queue_.pop_front();
                              if (!self->queue_.empty())
                                  self->SendNext();
                          });
    }
    void Break() {
        if (!handlers_.ended)
            return;
        broken_ = true;
        Kill(); // nobody can speak with it any more
        TellEnd();
    }
    void TellEnd() {
        if (!exited_ || !broken_)
            return;
        DWORD status = 0;
        GetExitCodeProcess(process_.native_handle(), &status);
        if (const auto ended = std::exchange(handlers_.ended, nullptr))
            ended(HowItEnded(status));
    }

    asio::windows::stream_handle pipe_;
    asio::windows::object_handle process_;
    ViewProcess::Handlers handlers_; // none once the user is gone
    PacketSize size_ = 0;
    std::string packet_;
    std::deque<std::string> queue_; // the first one is on its way
    bool broken_ = false;           // all that it has sent has been read
    bool exited_ = false;
};

class SecondProcess final : public ViewProcess {
  public:
    explicit SecondProcess(std::shared_ptr<Link> link) : link_(std::move(link)) {}
    ~SecondProcess() override { link_->Abandon(); }

    bool Send(const std::string& packet) override { return link_->Send(packet); }
    void Kill() override { link_->Kill(); }

  private:
    std::shared_ptr<Link> link_;
};

} // namespace

Result<std::unique_ptr<ViewProcess>> ViewProcess::Start(AsioLoop& loop, Handlers handlers) {
    if (!DesktopIsSeen())
        return Trouble{"there is no desktop (a service has none)"};
    PipeEnds ends = MakePipe();
    if (!ends.its)
        return Trouble{"no pipe: " + LastError().message()};
    WindowsHandle process = StartThisProgram(ends.its.Get());
    if (!process) {
        const std::string why = LastError().message();
        return Trouble{"the program " + ThisProgram() + " cannot be started: " + why};
    }
    auto link = std::make_shared<Link>(loop, std::move(handlers));
    link->Begin(std::move(ends.ours), std::move(process));
    return std::unique_ptr<ViewProcess>(std::make_unique<SecondProcess>(std::move(link)));
}

} // namespace tarnex
