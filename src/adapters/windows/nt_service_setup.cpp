#include "adapters/windows/nt_service_setup.h"

#include "adapters/windows/nt_service.h"
#include "adapters/windows/process_image.h"
#include "adapters/windows/windows_text.h"
#include "platform/error_words.h"

#include <memory>

namespace tarnex {

namespace {

constexpr const wchar_t* kDescription =
    L"Passes notifications of monitoring programs on by SMS and mail, through a GSM alarm unit.";
constexpr const wchar_t* kServiceKey = L"SYSTEM\\CurrentControlSet\\Services\\TarnexComm";
constexpr const wchar_t* kEventSource =
    L"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\TarnexComm";
constexpr DWORD kPreshutdownLimit = 10'000; // ms
constexpr DWORD kSecondsUntilForgotten = 86'400;
// After a failure, in ms; the last one from then on: nobody may be near to start it.
constexpr DWORD kRestartDelays[] = {5'000, 30'000, 120'000};
constexpr DWORD kStopLimit = 10'000; // ms
constexpr DWORD kPause = 50;         // ms

struct CloseService {
    void operator()(SC_HANDLE handle) const { CloseServiceHandle(handle); }
};
using ServiceHandle = std::unique_ptr<SC_HANDLE__, CloseService>;

SetupTrouble Explain(DWORD error) {
    switch (error) {
    case ERROR_SUCCESS:
        return {};
    case ERROR_ACCESS_DENIED:
        return {kExitNoRights,
                "it takes an administrator. Run this in a command prompt that is run "
                "as administrator"};
    case ERROR_SERVICE_DOES_NOT_EXIST:
        return {kExitUnavailable, "none is installed"};
    case ERROR_SERVICE_MARKED_FOR_DELETE:
        return {kExitTryLater, "its removal waits for a program that still looks at it. Close the "
                               "list of services, or start the machine again"};
    }
    const std::error_code code(static_cast<int>(error), std::system_category());
    return {kExitFailed, WordsFor(code)};
}

SetupTrouble LastTrouble() {
    return Explain(GetLastError());
}

// What cannot be set on some Windows is left as it is.
void Describe(SC_HANDLE service) {
    SERVICE_DESCRIPTIONW description{.lpDescription = const_cast<wchar_t*>(kDescription)};
    ChangeServiceConfig2W(service, SERVICE_CONFIG_DESCRIPTION, &description);

    SC_ACTION actions[std::size(kRestartDelays)];
    for (std::size_t i = 0; i < std::size(actions); ++i)
        actions[i] = {.Type = SC_ACTION_RESTART, .Delay = kRestartDelays[i]};
    SERVICE_FAILURE_ACTIONSW failure{};
    failure.dwResetPeriod = kSecondsUntilForgotten;
    failure.cActions = std::size(actions);
    failure.lpsaActions = actions;
    ChangeServiceConfig2W(service, SERVICE_CONFIG_FAILURE_ACTIONS, &failure);
    // An end with a trouble counts as well as a crash.
    SERVICE_FAILURE_ACTIONS_FLAG every_failure{.fFailureActionsOnNonCrashFailures = TRUE};
    ChangeServiceConfig2W(service, SERVICE_CONFIG_FAILURE_ACTIONS_FLAG, &every_failure);

    SERVICE_PRESHUTDOWN_INFO preshutdown{.dwPreshutdownTimeout = kPreshutdownLimit};
    ChangeServiceConfig2W(service, SERVICE_CONFIG_PRESHUTDOWN_INFO, &preshutdown);
    // Of all that its account may do it needs no more.
    wchar_t privileges[] = L"SeChangeNotifyPrivilege\0";
    SERVICE_REQUIRED_PRIVILEGES_INFOW required{.pmszRequiredPrivileges = privileges};
    ChangeServiceConfig2W(service, SERVICE_CONFIG_REQUIRED_PRIVILEGES_INFO, &required);
}

LSTATUS SetText(const std::wstring& key, const std::wstring& name, DWORD type,
                const std::wstring& value) {
    const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    return RegSetKeyValueW(HKEY_LOCAL_MACHINE, key.c_str(), name.c_str(), type, value.c_str(),
                           size);
}

DWORD RegisterEventSource(const std::wstring& program) {
    const DWORD types = EVENTLOG_ERROR_TYPE | EVENTLOG_WARNING_TYPE | EVENTLOG_INFORMATION_TYPE;
    const LSTATUS status = SetText(kEventSource, L"EventMessageFile", REG_EXPAND_SZ, program);
    if (status != ERROR_SUCCESS)
        return static_cast<DWORD>(status);
    return static_cast<DWORD>(RegSetKeyValueW(HKEY_LOCAL_MACHINE, kEventSource, L"TypesSupported",
                                              REG_DWORD, &types, sizeof types));
}

void StopAndWait(SC_HANDLE service) {
    SERVICE_STATUS status{};
    ControlService(service, SERVICE_CONTROL_STOP, &status);
    for (DWORD waited = 0; waited < kStopLimit; waited += kPause) {
        if (!QueryServiceStatus(service, &status) || status.dwCurrentState == SERVICE_STOPPED)
            return;
        Sleep(kPause);
    }
}

} // namespace

SetupTrouble InstallService() {
    const std::wstring program = ImageOf(GetCurrentProcess());
    const std::wstring command = L"\"" + program + L"\""; // its path may hold blanks
    const ServiceHandle manager(
        OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT | SC_MANAGER_CREATE_SERVICE));
    if (!manager)
        return LastTrouble();
    ServiceHandle service(CreateServiceW(manager.get(), kServiceName, kServiceName,
                                         SERVICE_ALL_ACCESS, SERVICE_WIN32_OWN_PROCESS,
                                         SERVICE_AUTO_START, SERVICE_ERROR_NORMAL, command.c_str(),
                                         nullptr, nullptr, nullptr, nullptr, nullptr));
    if (!service && GetLastError() == ERROR_SERVICE_EXISTS) {
        service.reset(OpenServiceW(manager.get(), kServiceName, SERVICE_ALL_ACCESS));
        if (service &&
            !ChangeServiceConfigW(service.get(), SERVICE_WIN32_OWN_PROCESS, SERVICE_AUTO_START,
                                  SERVICE_ERROR_NORMAL, command.c_str(), nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr))
            return LastTrouble();
    }
    if (!service)
        return LastTrouble();
    Describe(service.get());
    return Explain(RegisterEventSource(program));
}

SetupTrouble RemoveService() {
    const ServiceHandle manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    if (!manager)
        return LastTrouble();
    const ServiceHandle service(
        OpenServiceW(manager.get(), kServiceName, SERVICE_STOP | SERVICE_QUERY_STATUS | DELETE));
    if (!service)
        return LastTrouble();
    StopAndWait(service.get()); // it would stay in the list until it ends
    if (!DeleteService(service.get()))
        return LastTrouble();
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, kEventSource);
    return {};
}

void SaveServiceParameter(const std::wstring& name, const std::wstring& value) {
    SetText(std::wstring(kServiceKey) + L"\\Parameters", name, REG_SZ, value);
}

} // namespace tarnex
