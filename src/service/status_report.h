#pragma once

#include "service/service_parts.h"
#include "service/service_status.h"

namespace tarnex {

// Keeps the status text up to date in its sink, for other programs. It looks for changes, so that
// no part has to tell of its own, and never wakes the loop while nothing changes. When something
// else wakes the loop the text is never older than a minute, so that an old one tells of a service
// that hangs.
class StatusReport {
  public:
    // The parts must outlive the report. Without a sink in their world nobody wants to know.
    explicit StatusReport(ServiceParts& parts) : parts_(parts) {}
    StatusReport(const StatusReport&) = delete;
    StatusReport& operator=(const StatusReport&) = delete;
    ~StatusReport() { Stop(); }

    // From now on the text is there.
    void Start();
    // The last text: it says that the service has ended, and stays. Harmless before Start() and a
    // second time.
    void Stop();
    // To be called whenever the loop is about to sleep or too busy to.
    void Look();

  private:
    bool Due() const { return parts_.world.clock.Now() >= next_write_; }
    void Write(const ServiceStatus& status, bool ended = false);
    ServiceStatus Collect() const;
    ServiceStatus::Unit CollectUnit() const;
    UnitPhase Phase() const;

    ServiceParts& parts_;
    bool started_ = false;
    std::optional<ServiceStatus> written_;
    Duration next_write_{};
    bool call_pending_ = false;
    CallId call_;
};

} // namespace tarnex
