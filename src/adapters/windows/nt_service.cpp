#include "adapters/windows/nt_service.h"

#include "adapters/asio/asio_loop.h"
#include "adapters/windows/event_log.h"
#include "adapters/windows/nt_service_setup.h"
#include "adapters/windows/windows_handle.h"
#include "adapters/windows/windows_text.h"

#include <condition_variable>
#include <mutex>
#include <thread>

#include <tlhelp32.h>

namespace tarnex {

namespace {

constexpr int kAcceptsPauseAndContinue = 2;
// How long the service manager is to wait for the next state, in ms.
constexpr DWORD kStartHint = 10'000;
constexpr DWORD kStopHint = 5'000;
constexpr DWORD kPauseHint = 1'000;
constexpr std::chrono::seconds kConnectLimit(5); // with the service manager

// There is one service a process, and Windows calls plain functions, in threads of their own.
class Service {
  public:
    struct Handlers {
        std::function<void(bool system_ending)> stop;
        std::function<void()> pause;
        std::function<void()> resume;
    };

    // handlers: called from the loop, until Detach().
    void Attach(AsioLoop& loop, Handlers handlers, bool pauses) {
        const std::lock_guard lock(mutex_);
        loop_ = &loop;
        handlers_ = std::move(handlers);
        controls_ = SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_SHUTDOWN | SERVICE_ACCEPT_PRESHUTDOWN |
                    (pauses ? SERVICE_ACCEPT_PAUSE_CONTINUE : 0);
    }
    void Detach() {
        const std::lock_guard lock(mutex_);
        loop_ = nullptr;
    }
    void Connect() {
        std::thread([] {
            wchar_t name[] = L""; // a process with one service needs none
            const SERVICE_TABLE_ENTRYW services[] = {{name, Main}, {nullptr, nullptr}};
            StartServiceCtrlDispatcherW(services);
        }).detach();
    }
    void TellReady() {
        const std::lock_guard lock(mutex_);
        if (status_.dwCurrentState == SERVICE_START_PENDING)
            Tell(SERVICE_RUNNING, 0);
    }
    // Waits for the connection: the service manager takes a service that never came for a failure.
    void TellStopped(int exit_status) {
        std::unique_lock lock(mutex_);
        connected_.wait_for(lock, kConnectLimit, [this] { return handle_ != nullptr; });
        status_.dwWin32ExitCode = exit_status == 0 ? NO_ERROR : ERROR_SERVICE_SPECIFIC_ERROR;
        status_.dwServiceSpecificExitCode = static_cast<DWORD>(exit_status);
        Tell(SERVICE_STOPPED, 0);
    }

  private:
    static void WINAPI Main(DWORD, wchar_t**);
    static DWORD WINAPI TakeControl(DWORD control, DWORD, void*, void*);

    DWORD Take(DWORD control) {
        const std::lock_guard lock(mutex_);
        switch (control) {
        case SERVICE_CONTROL_STOP:
        case SERVICE_CONTROL_SHUTDOWN:
        case SERVICE_CONTROL_PRESHUTDOWN:
            Tell(SERVICE_STOP_PENDING, kStopHint);
            Post([this, control] { handlers_.stop(control != SERVICE_CONTROL_STOP); });
            return NO_ERROR;
        case SERVICE_CONTROL_PAUSE:
            Tell(SERVICE_PAUSE_PENDING, kPauseHint);
            Post([this] { Carry(handlers_.pause, SERVICE_PAUSE_PENDING, SERVICE_PAUSED); });
            return NO_ERROR;
        case SERVICE_CONTROL_CONTINUE:
            Tell(SERVICE_CONTINUE_PENDING, kPauseHint);
            Post([this] { Carry(handlers_.resume, SERVICE_CONTINUE_PENDING, SERVICE_RUNNING); });
            return NO_ERROR;
        case SERVICE_CONTROL_INTERROGATE:
            Tell(status_.dwCurrentState, status_.dwWaitHint);
            return NO_ERROR;
        }
        return ERROR_CALL_NOT_IMPLEMENTED;
    }
    // From the loop.
    void Carry(const std::function<void()>& handler, DWORD from, DWORD to) {
        handler();
        const std::lock_guard lock(mutex_);
        if (status_.dwCurrentState == from) // no stop has come meanwhile
            Tell(to, 0);
    }
    void Post(std::function<void()> call) {
        if (loop_)
            loop_->Post([this, call = std::move(call)] {
                if (Attached())
                    call();
            });
    }
    bool Attached() {
        const std::lock_guard lock(mutex_);
        return loop_ != nullptr;
    }
    // hint: ms until the next state; 0 for one that stays.
    void Tell(DWORD state, DWORD hint) {
        const bool settled = state == SERVICE_RUNNING || state == SERVICE_PAUSED;
        status_.dwCheckPoint = hint == 0 ? 0 : status_.dwCheckPoint + 1;
        status_.dwCurrentState = state;
        status_.dwWaitHint = hint;
        status_.dwControlsAccepted = settled ? controls_ : 0;
        if (handle_)
            SetServiceStatus(handle_, &status_);
    }

    std::mutex mutex_; // of all that follows
    std::condition_variable connected_;
    SERVICE_STATUS_HANDLE handle_ = nullptr;
    SERVICE_STATUS status_{.dwServiceType = SERVICE_WIN32_OWN_PROCESS,
                           .dwCurrentState = SERVICE_START_PENDING,
                           .dwControlsAccepted = 0,
                           .dwWin32ExitCode = NO_ERROR,
                           .dwServiceSpecificExitCode = 0,
                           .dwCheckPoint = 0,
                           .dwWaitHint = kStartHint};
    DWORD controls_ = 0; // that it takes while it runs
    AsioLoop* loop_ = nullptr;
    Handlers handlers_;
};

// Never destroyed: the threads of Windows may come until the very end.
Service& TheService() {
    static Service& service = *new Service;
    return service;
}

// The service goes on when this returns: it ends when it tells so.
void WINAPI Service::Main(DWORD, wchar_t**) {
    Service& self = TheService();
    const std::lock_guard lock(self.mutex_);
    self.handle_ = RegisterServiceCtrlHandlerExW(kServiceName, TakeControl, nullptr);
    self.Tell(self.status_.dwCurrentState, self.status_.dwWaitHint);
    self.connected_.notify_all();
}

DWORD WINAPI Service::TakeControl(DWORD control, DWORD, void*, void*) {
    return TheService().Take(control);
}

// all: of the toolhelp functions. Empty when the process is not there any more.
PROCESSENTRY32W EntryOf(DWORD process, HANDLE all) {
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(all, &entry); more; more = Process32NextW(all, &entry))
        if (entry.th32ProcessID == process)
            return entry;
    return {};
}

} // namespace

// Whoever else has started it, StartServiceCtrlDispatcher fails, but at some places only after ten
// seconds. The service manager lives as long as the system, so that nobody else gets its number.
bool RunsAsService() {
    static const bool service = [] {
        const WindowsHandle all(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
        const DWORD parent = EntryOf(GetCurrentProcessId(), all.Get()).th32ParentProcessID;
        return _wcsicmp(EntryOf(parent, all.Get()).szExeFile, L"services.exe") == 0;
    }();
    return service;
}

NtServiceController::NtServiceController(AsioLoop& loop, SetupFailed failed)
    : loop_(loop), failed_(std::move(failed)) {}

NtServiceController::~NtServiceController() {
    TheService().Detach();
}

bool NtServiceController::Install(bool) {
    const SetupTrouble trouble = InstallService();
    if (!trouble.words.empty())
        failed_(trouble.status, "The service cannot be installed: " + trouble.words);
    return trouble.words.empty();
}

bool NtServiceController::Uninstall() {
    const SetupTrouble trouble = RemoveService();
    if (!trouble.words.empty())
        failed_(trouble.status, "The service cannot be removed: " + trouble.words);
    return trouble.words.empty();
}

void NtServiceController::SaveParameter(std::string_view name, std::string_view value) {
    SaveServiceParameter(ToWide(name), ToWide(value));
}

void NtServiceController::StartService(int controls_accepted, ServiceEvents events) {
    events_ = std::move(events);
    if (RunsAsService()) {
        TheService().Attach(loop_,
                            {.stop = [this](bool system_ending) { Stop(system_ending); },
                             .pause = [this] { events_.pause(); },
                             .resume = [this] { events_.resume(); }},
                            (controls_accepted & kAcceptsPauseAndContinue) != 0);
        TheService().Connect();
    } else {
        requests_.emplace(loop_);
        requests_->OnEnd([this] { Stop(false); });
        requests_->OnGone([this] { Stop(false); });
        requests_->OnSystemEnd([this] { Stop(true); });
        requests_->BeforeSystemEnd([this] { return events_.before_system_end(); });
    }
    loop_.CallAfter(Duration::zero(), [this] { events_.start(); });
}

void NtServiceController::Stop(bool system_ending) {
    if (!std::exchange(stopping_, true))
        events_.stop(system_ending);
}

void NtServiceController::ReportReady() {
    TheService().TellReady();
}

void NtServiceController::LogEvent(EventType type, int number, std::string_view text) {
    WriteEventLog(type, number, text);
}

std::unique_ptr<ServiceController> MakeServiceController(AsioLoop& loop, SetupFailed failed) {
    return std::make_unique<NtServiceController>(loop, std::move(failed));
}

void ReportEndOfService(int exit_status) {
    if (RunsAsService())
        TheService().TellStopped(exit_status);
}

} // namespace tarnex
