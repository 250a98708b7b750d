#pragma once

#include "adapters/system/end_requests.h"
#include "adapters/system/service_manager.h"

#include <optional>

namespace tarnex {

inline constexpr const wchar_t* kServiceName = L"TarnexComm";

// Whether the service manager has started this process. Asking is quick.
bool RunsAsService();

// The service manager of Windows. A process that somebody else has started stops on Ctrl-C, with
// its console, and with the session of its user.
class NtServiceController : public ServiceController {
  public:
    NtServiceController(AsioLoop& loop, SetupFailed failed);
    ~NtServiceController() override;

    // interactive has no meaning any more: services have no screen.
    bool Install(bool interactive) override;
    bool Uninstall() override;
    void SaveParameter(std::string_view name, std::string_view value) override;
    // start is called once from the loop, stop once at most. The service counts as starting until
    // ReportReady(), and takes no controls until then.
    void StartService(int controls_accepted, ServiceEvents events) override;
    void ReportReady() override;
    void LogEvent(EventType type, int number, std::string_view text) override;

  private:
    void Stop(bool system_ending);

    AsioLoop& loop_;
    SetupFailed failed_;
    ServiceEvents events_;
    std::optional<EndRequests> requests_; // unless it runs as a service
    bool stopping_ = false;
};

} // namespace tarnex
