// tarnex-monitor: a monitoring program on one control link of the service.

#include "adapters/asio/asio_datagram.h"
#include "adapters/system/arguments.h"
#include "adapters/system/end_requests.h"
#include "adapters/system/system_code_page.h"
#include "adapters/system/terminal.h"
#include "programs/monitor_arguments.h"
#include "programs/program_output.h"
#include "simulator/monitor_messages.h"

namespace tarnex {
namespace {

constexpr Duration kAnswerLimit = 5s;

std::string NameOf(const Endpoint& service) {
    return service.address + ":" + std::to_string(service.port);
}

int Fail(int status, const std::string& trouble) {
    PrintError("tarnex-monitor: " + trouble + "\n");
    return status;
}

class Listener {
  public:
    explicit Listener(const MonitorArguments& arguments);
    // The exit status.
    int Run();

  private:
    void Print(const std::string& line);
    void Show(const Text& message);
    void CheckAnswered();
    void EndUnseen();
    void End(int status);

    const MonitorArguments& arguments_;
    AsioLoop loop_;
    EndRequests requests_{loop_};
    AsioDatagramSockets sockets_;
    SystemCodePage code_page_;
    Monitor monitor_;
    bool answered_ = false;
    std::optional<int> status_;
};

Listener::Listener(const MonitorArguments& arguments)
    : arguments_(arguments),
      sockets_(loop_, arguments.monitor.address.starts_with("127.") ? "127.0.0.1" : "0.0.0.0"),
      code_page_(arguments.encoding), monitor_(loop_, sockets_, code_page_, arguments.monitor) {
    monitor_.OnMessage([this](const Text& message) { Show(message); });
    BrokenStreamsFail();
    requests_.OnEnd([this] { EndUnseen(); });
    requests_.OnGone([this] { EndUnseen(); });
}

int Listener::Run() {
    if (const std::string trouble = monitor_.Start(); !trouble.empty())
        return Fail(kExitFailed, "cannot listen: " + trouble);
    Print("greeted " + NameOf(ServiceEndpoint(arguments_.monitor)));
    loop_.CallAfter(kAnswerLimit, [this] { CheckAnswered(); });
    if (arguments_.listen_time)
        loop_.CallAfter(*arguments_.listen_time, [this] {
            CheckAnswered();
            EndUnseen();
        });
    loop_.Run();
    return *status_;
}

// Who listens to this one may go first.
void Listener::Print(const std::string& line) {
    if (!PrintWithTime(loop_, line))
        loop_.CallAfter(0ms, [this] { EndUnseen(); });
}

void Listener::Show(const Text& message) {
    answered_ = true;
    Print(ToUtf8(message) + "  (" + DescribeCode(message) + ")");
    if (arguments_.until && StartsWith(message, *arguments_.until))
        End(kExitDone);
}

void Listener::CheckAnswered() {
    if (!answered_)
        End(Fail(kExitUnavailable, "nobody answers at " +
                                       NameOf(ServiceEndpoint(arguments_.monitor)) +
                                       "; is the service running?"));
}

void Listener::EndUnseen() {
    End(arguments_.until ? kExitFailed : kExitDone);
}

// The first reason to end counts.
void Listener::End(int status) {
    status_ = status_.value_or(status);
    loop_.Stop();
}

int SendOnce(const MonitorArguments& arguments, const Text& message) {
    const Endpoint service = ServiceEndpoint(arguments.monitor);
    const SystemCodePage code_page(arguments.encoding);
    const std::string trouble = SendDatagram(service, code_page.Encode(message));
    if (!trouble.empty())
        return Fail(kExitUnavailable, NameOf(service) + ": " + trouble);
    PrintOut("sent to " + NameOf(service) + ": " + ToUtf8(message) + "\n");
    return kExitDone;
}

int Notify(const MonitorArguments& arguments) {
    const int status = SendOnce(arguments, MakeEventMessage(arguments.event));
    if (status == kExitDone)
        PrintOut(DescribeEvent(arguments.event) + "\n");
    return status;
}

int CarryOut(const MonitorArguments& arguments) {
    switch (arguments.command) {
    case MonitorArguments::Command::kListen:
        return Listener(arguments).Run();
    case MonitorArguments::Command::kNotify:
        return Notify(arguments);
    case MonitorArguments::Command::kRaw:
        return SendOnce(arguments, arguments.raw);
    }
    return kExitUsage;
}

} // namespace
} // namespace tarnex

int main(int argc, char** argv) {
    tarnex::OccupyStandardStreams();
    tarnex::MonitorArguments arguments;
    if (const auto status =
            tarnex::ReadMonitorArguments(tarnex::ProgramArguments(argc, argv), arguments))
        return *status;
    return tarnex::CarryOut(arguments);
}
