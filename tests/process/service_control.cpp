// service-control WHAT: has the service manager of Windows start, pause, continue or stop the
// service TarnexComm, or nothing to "query"; prints "STATE EXIT_STATUS" as they are then, or the
// error. What Wine has for it cannot pause, and tells no exit status.

#include <cstdio>
#include <map>
#include <string>

#include <windows.h>

int main(int, char** arguments) {
    const std::map<std::string, DWORD> controls = {{"pause", SERVICE_CONTROL_PAUSE},
                                                   {"continue", SERVICE_CONTROL_CONTINUE},
                                                   {"stop", SERVICE_CONTROL_STOP}};
    const SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
    const SC_HANDLE service = OpenServiceW(manager, L"TarnexComm", SERVICE_ALL_ACCESS);
    SERVICE_STATUS status{};
    const std::string what = arguments[1];
    BOOL done = service != nullptr;
    if (what == "start")
        done = StartServiceW(service, 0, nullptr);
    else if (const auto control = controls.find(what); control != controls.end())
        done = ControlService(service, control->second, &status);
    if (!done || !QueryServiceStatus(service, &status)) {
        std::printf("error %lu\n", GetLastError());
        return 1;
    }
    std::printf("%lu %lu\n", status.dwCurrentState, status.dwServiceSpecificExitCode);
    return 0;
}
