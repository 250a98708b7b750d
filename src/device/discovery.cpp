#include "device/discovery.h"

#include "settings/setting_table.h"

namespace tarnex {

namespace {

constexpr int kFirstPort = 1;
constexpr int kLastPort = kSerialPorts;
constexpr TextView kGreeting = u"Hello,sever"; // the unit's own spelling
constexpr std::size_t kShortestGreeting = 10;

// Holds also for a scan that is cancelled half-way.
class ScanMark {
  public:
    explicit ScanMark(bool& scanning) : scanning_(scanning) { scanning_ = true; }
    ScanMark(const ScanMark&) = delete;
    ~ScanMark() { scanning_ = false; }

  private:
    bool& scanning_;
};

} // namespace

Task<int> Discovery::Connect(Ports which) {
    if (port_no_ != 0)
        co_return port_no_;
    int first = kFirstPort;
    int last = kLastPort;
    if (which == Ports::kLast)
        if (const int number = StoredPort(); number != 0)
            first = last = number;
    co_return co_await Scan(first, last);
}

int Discovery::StoredPort() const {
    return LeadingInt16(parts_.ini.GetIniStr("last-port"_setting)).value_or(0);
}

int Discovery::LastPort() const {
    const int number = StoredPort();
    return number >= kFirstPort && number <= kLastPort ? number : 0;
}

Task<int> Discovery::ConnectTo(int number) {
    if (port_no_ != 0)
        co_return port_no_;
    co_return co_await Scan(number, number);
}

Task<int> Discovery::Scan(int first, int last) {
    const ScanMark mark(scanning_);
    for (int number = first; number <= last; ++number) {
        const bool found = co_await Try(number);
        if (found) {
            port_no_ = number;
            break;
        }
        parts_.port.Close();
    }
    co_return port_no_;
}

Task<bool> Discovery::Try(int number) {
    parts_.trace.DebugAdd(u"正在查询com:", ToText(number));
    const LineSettings settings;
    const PortStatus status = parts_.port.Open(number, settings);
    TellOperator(number, status);
    parts_.init();
    const Text reply = co_await HelloTarnex();
    parts_.sender.AnswerWaitTime = CommandSender::kCommandWait;
    const bool found = reply == kOk || reply == u"INIT";
    if (parts_.main_job)
        parts_.main_job->PortTried({.number = number, .device = parts_.ports.DeviceName(number)},
                                   status, found);
    co_return found;
}

void Discovery::TellOperator(int number, PortStatus status) {
    const std::string name = "COM" + std::to_string(number);
    const std::string port = name + " (" + parts_.ports.DeviceName(number) + ")";
    std::string trouble;
    if (status == PortStatus::kForbidden)
        trouble = port + " may not be opened. Add the user of this service to the group that owns "
                         "the device (mostly dialout) and restart the service.";
    else if (status == PortStatus::kBusy)
        trouble =
            port +
            " is held by another program. End that program, or name another device (setting " +
            NameOf(DeviceSetting(number)) + ") and restart the service.";
    const char* const now =
        status == PortStatus::kOk ? " can be opened now." : " is no serial line any more.";
    parts_.notices.Report(name, trouble, port + now);
}

int Discovery::ConnectClose() {
    const int closed = port_no_;
    if (closed != 0) {
        parts_.port.Close();
        parts_.answer.EndWaits();
    }
    port_no_ = 0;
    return closed;
}

Task<Text> Discovery::HelloTarnex() {
    const Text reply = co_await parts_.sender.SendCommand(u"Hello,tarnex");
    if (Contains(reply, u"Init"))
        co_return u"INIT";
    if (reply.size() >= kShortestGreeting && Contains(reply, kGreeting))
        co_return Text(kOk);
    co_return Text(kFailed);
}

} // namespace tarnex
