// tarnexcomm: the service.

#include "adapters/asio/asio_datagram.h"
#include "adapters/asio/asio_tcp_client.h"
#include "adapters/sqlite/any_log_table.h"
#include "adapters/sqlite/sqlite_history.h"
#include "adapters/system/arguments.h"
#include "adapters/system/operator_output.h"
#include "adapters/system/process.h"
#include "adapters/system/request_socket.h"
#include "adapters/system/screen_view.h"
#include "adapters/system/service_manager.h"
#include "adapters/system/status_file.h"
#include "adapters/system/this_system.h"
#include "programs/machine.h"
#include "service/tarnex_comm.h"

namespace tarnex {
namespace {

std::string Joined(const std::vector<std::string>& words) {
    std::string joined;
    for (std::size_t i = 0; i < words.size(); ++i)
        joined += (i > 0 ? " " : "") + words[i];
    return joined;
}

int Run(const std::vector<std::string>& arguments) {
    MakeFoldersOfThisSystem();
    Machine machine("tarnexcomm");
    AsioLoop& loop = machine.loop;
    AsioDatagramSockets sockets(loop, machine.settings.bind_address);
    int exit_status = kExitDone;
    // Before all files: once it is gone, a system that ends waits for this process no longer.
    const auto controller =
        MakeServiceController(loop, [&](ExitStatus failed, const std::string& why) {
            exit_status = failed;
            machine.Say(NoticeLevel::kError, why);
        });
    AsioTcpClients tcp(loop);
    AnyLogTable log;
    SqliteHistory history(HistoryPath());
    const auto say = [&machine](const std::string& line) { machine.Say(line); };
    StatusFile status(StatusFilePath());
    DebugLines debug_lines(machine.store.Name());
    const auto say_lost = [&say](const std::string& why) {
        say(why + ", and the windows with it. Going on without");
    };
    const auto view = MakeView({.loop = loop, .notice = say, .lost = say_lost});
    TarnexComm service(
        {.clock = loop,
         .serial_ports = machine.ports,
         .sockets = sockets,
         .tcp = tcp,
         .log_table = log,
         .history = history,
         .settings_store = machine.store,
         .files = machine.files,
         .code_page = machine.code_page,
         .controller = *controller,
         .instance_lock = machine.lock,
         .words = machine.words,
         .view = view.get(),
         .notice = [&machine](NoticeLevel level,
                              const std::string& line) { machine.Say(level, line); },
         .echo = [&debug_lines](const std::string& list,
                                const Text& line) { debug_lines.Write(EchoLine(list, line)); },
         .take_start_settings = [&]() -> std::optional<StartSettings> {
             exit_status = machine.TakeSettings();
             if (exit_status != kExitDone)
                 return std::nullopt;
             sockets.SetBindAddress(machine.settings.bind_address);
             return machine.settings;
         },
         .end_process = [&loop] { loop.Stop(); },
         .status = status.Possible() ? &status : nullptr,
         .process_id = ThisProcess()});
    service.Form_Load(Joined(arguments));
    RequestSocket requests(loop,
                           [&service](const std::string& text) { return service.Answer(text); });
    if (status.Possible() && !service.Ended())
        if (const std::string problem = requests.Listen(RequestSocketPath()); !problem.empty())
            machine.Say(NoticeLevel::kWarning,
                        "tarnexctl resend will not work: " + RequestSocketPath() + ": " + problem);
    loop.Run();
    return exit_status;
}

} // namespace
} // namespace tarnex

int main(int argc, char** argv) {
    const int status = tarnex::Run(tarnex::ProgramArguments(argc, argv));
    tarnex::ReportEndOfService(status);
    return status;
}
