#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tarnex {

enum class EventType { kError = 1, kWarning = 2, kInformation = 4 };

// What the service controller tells the service, from the loop.
struct ServiceEvents {
    std::function<void()> start;
    // system_ending: the whole machine is shutting down.
    std::function<void(bool system_ending)> stop;
    std::function<void()> pause;
    std::function<void()> resume;
    // Asked before the user's session or the machine ends, where the system asks: why that has to
    // wait, in words for its user; "" when it need not.
    std::function<std::string()> before_system_end = [] { return std::string(); };
};

// The system's service manager.
class ServiceController {
  public:
    virtual ~ServiceController() = default;

    // Registers this program as a service that starts with the machine.
    virtual bool Install(bool interactive) = 0;
    virtual bool Uninstall() = 0;
    // Keeps a parameter of the installed service under the key "Parameters".
    virtual void SaveParameter(std::string_view name, std::string_view value) = 0;
    // Connects the process to the service manager; from now on the events are called, and a
    // manager that watches over the service is told that the loop still runs its handlers.
    // controls_accepted 2: pause and continue.
    virtual void StartService(int controls_accepted, ServiceEvents events) = 0;
    // The service works (its sockets are bound).
    virtual void ReportReady() = 0;
    // An entry of the system's event log; text is ASCII.
    virtual void LogEvent(EventType type, int number, std::string_view text) = 0;
};

// Keeps a second instance of the program from running on the machine.
class InstanceLock {
  public:
    virtual ~InstanceLock() = default;
    // False when another instance holds the lock. Held until the process ends, however it ends.
    virtual bool Acquire() = 0;
    // Ends the process that the lock records when it is another, live copy of this program.
    virtual void KillLeftOver() = 0;
};

} // namespace tarnex
