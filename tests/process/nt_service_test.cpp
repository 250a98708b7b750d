#include "adapters/asio/asio_loop.h"
#include "adapters/system/end_requests.h"
#include "adapters/windows/nt_service.h"
#include "adapters/windows/windows_headers.h"
#include "adapters/windows/windows_text.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

// The real program as a service of the Windows that it runs on, whose settings it gets.
namespace tarnex {
namespace {

constexpr DWORD kPatience = 120'000; // ms; nothing takes so long but a failure

struct CloseService {
    void operator()(SC_HANDLE handle) const { CloseServiceHandle(handle); }
};
using ServiceHandle = std::unique_ptr<SC_HANDLE__, CloseService>;

// The test stands beside the folder of the programs.
std::wstring Program() {
    wchar_t path[MAX_PATH]{};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return (std::filesystem::path(path).parent_path().parent_path() / L"bin" / L"tarnexcomm.exe")
        .wstring();
}

DWORD ExitOf(const wchar_t* argument) {
    std::wstring line = L"\"" + Program() + L"\" " + argument;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    DWORD status = ~0U;
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                       &process) &&
        WaitForSingleObject(process.hProcess, kPatience) == WAIT_OBJECT_0)
        GetExitCodeProcess(process.hProcess, &status);
    return status;
}

ServiceHandle OpenInstalled() {
    const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    return ServiceHandle(OpenServiceW(manager.get(), kServiceName, SERVICE_ALL_ACCESS));
}

// The state once it is what is awaited, or after the time.
SERVICE_STATUS Await(const ServiceHandle& service, DWORD state, DWORD exit_status = 0) {
    SERVICE_STATUS status{};
    for (DWORD waited = 0; waited < kPatience; waited += 10) {
        QueryServiceStatus(service.get(), &status);
        if (status.dwCurrentState == state && status.dwServiceSpecificExitCode == exit_status)
            break;
        Sleep(10);
    }
    return status;
}

bool Start(const ServiceHandle& service) {
    return StartServiceW(service.get(), 0, nullptr);
}

DWORD StateAfter(const ServiceHandle& service, DWORD control, DWORD state) {
    SERVICE_STATUS status{};
    EXPECT_TRUE(ControlService(service.get(), control, &status)) << GetLastError();
    return Await(service, state).dwCurrentState;
}

std::wstring Registered(const wchar_t* key, const wchar_t* name) {
    wchar_t text[MAX_PATH]{};
    DWORD size = sizeof text;
    RegGetValueW(HKEY_LOCAL_MACHINE,
                 (L"SYSTEM\\CurrentControlSet\\Services\\" + std::wstring(key)).c_str(), name,
                 RRF_RT_ANY | RRF_NOEXPAND, nullptr, text, &size);
    return text;
}

TEST(NtService, LivesUnderTheServiceManager) {
    const std::wstring settings = L"C:\\windows\\system\\Tarnex.ini";
    CreateDirectoryW(L"C:\\windows\\system", nullptr); // Windows has it, Wine does not
    const auto write_settings = [&settings] {
        std::ofstream(settings.c_str()) << "[Service]\nEnable=Enable\n[Check]\nCheck1(13)=1\n";
    };
    write_settings();
    ASSERT_EQ(ExitOf(L"/i"), 0u);
    ASSERT_EQ(ExitOf(L"/i"), 0u); // brings it up to date
    ServiceHandle service = OpenInstalled();
    ASSERT_TRUE(service);
    EXPECT_EQ(Registered(L"TarnexComm", L"ImagePath"), L"\"" + Program() + L"\"");
    EXPECT_EQ(Registered(L"TarnexComm\\Parameters", L"TimerInterval"), L"300");
    EXPECT_EQ(Registered(L"EventLog\\Application\\TarnexComm", L"EventMessageFile"), Program());

    EXPECT_TRUE(Start(service));
    EXPECT_EQ(Await(service, SERVICE_RUNNING).dwCurrentState, DWORD(SERVICE_RUNNING));
    for (const auto& [control, state] : {std::pair(SERVICE_CONTROL_PAUSE, SERVICE_PAUSED),
                                         std::pair(SERVICE_CONTROL_CONTINUE, SERVICE_RUNNING),
                                         std::pair(SERVICE_CONTROL_STOP, SERVICE_STOPPED)})
        EXPECT_EQ(StateAfter(service, control, state), DWORD(state));
    EXPECT_EQ(Await(service, SERVICE_STOPPED).dwWin32ExitCode, DWORD(NO_ERROR));

    // A start that fails says how.
    DeleteFileW(settings.c_str());
    CreateDirectoryW(settings.c_str(), nullptr);
    EXPECT_TRUE(Start(service));
    const SERVICE_STATUS failed = Await(service, SERVICE_STOPPED, kExitNoInput);
    EXPECT_EQ(failed.dwServiceSpecificExitCode, DWORD(kExitNoInput));
    RemoveDirectoryW(settings.c_str());
    write_settings();

    // It is taken away while it runs.
    EXPECT_TRUE(Start(service));
    EXPECT_EQ(Await(service, SERVICE_RUNNING).dwCurrentState, DWORD(SERVICE_RUNNING));
    service.reset();
    EXPECT_EQ(ExitOf(L"/u"), 0u);
    EXPECT_FALSE(OpenInstalled());
    EXPECT_EQ(ExitOf(L"/u"), DWORD(kExitUnavailable));
}

// What the viewer of events shows of one of that number.
TEST(EventLog, HasATextForEachNumber) {
    const HMODULE program = LoadLibraryExW(Program().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    DWORD_PTR inserted[] = {reinterpret_cast<DWORD_PTR>(L"the text")};
    for (const DWORD number : {100, 109, 110}) {
        wchar_t text[100]{};
        FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY, program, number,
                       0, text, 100, reinterpret_cast<va_list*>(inserted));
        EXPECT_STREQ(text, L"the text\r\n") << number;
    }
    FreeLibrary(program);
}

TEST(SessionEnd, WaitsAsLongAsTheProgramSaysWhy) {
    RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\Wine\\Drivers", L"Graphics", REG_SZ, L"null",
                    sizeof L"null"); // Wine makes no window without a screen, else
    AsioLoop loop;
    EndRequests requests(loop);
    std::string why = "it writes";
    requests.BeforeSystemEnd([&] { return why; });
    requests.OnSystemEnd([&] { loop.Stop(); });
    LRESULT may_end[2]{1, 0};
    std::thread system([&] {
        HWND window = nullptr;
        while (!window)
            window = FindWindowW(L"TarnexComm.SessionEnd", nullptr);
        for (LRESULT& each : may_end) {
            each = SendMessageW(window, WM_QUERYENDSESSION, 0, 0);
            loop.Post([&] { why.clear(); });
        }
        SendNotifyMessageW(window, WM_ENDSESSION, TRUE, 0);
    });
    loop.Run();
    system.join();
    EXPECT_EQ(may_end[0], FALSE);
    EXPECT_EQ(may_end[1], TRUE);
}

} // namespace
} // namespace tarnex
