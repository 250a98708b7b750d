// The service program: builds the objects, hands them to each other and runs the loop.

#include "platform/asio/asio_datagram.h"
#include "platform/asio/asio_loop.h"
#include "platform/asio/asio_tcp_client.h"
#include "platform/asio/tty_ports.h"
#include "platform/linux/disk_line_files.h"
#include "platform/linux/file_lock.h"
#include "platform/linux/file_settings_store.h"
#include "platform/linux/iconv_code_page.h"
#include "platform/linux/status_file.h"
#include "platform/linux/systemd_controller.h"
#include "platform/sqlite/sqlite_log_table.h"
#include "service/echo_line.h"
#include "service/tarnex_comm.h"
#include "settings/start_settings.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

namespace tarnex {
namespace {

std::string JoinArguments(int argc, char** argv) {
    std::string joined;
    for (int i = 1; i < argc; ++i)
        joined += (i > 1 ? " " : "") + std::string(argv[i]);
    return joined;
}

// Plain C output: the standard streams would cost a tenth of the idle memory.
void Print(const std::string& lines) {
    std::fputs(lines.c_str(), stderr);
}

void Say(const std::string& line) {
    Print("tarnexcomm: " + line + "\n");
}

StartSettings ReadFile(const SettingsStore& store) {
    const IconvCodePage utf8("UTF-8");
    StartSettings settings = ReadStartSettings(IniDocument(store.Read().value_or(""), utf8));
    if (!IconvCodePage::Supported(settings.code_page)) {
        Say("The settings in " + store.Name() + ", section [Encoding], name the code page \"" +
            settings.code_page + "\". GBK and UTF-8 are supported; going on with GBK.");
        settings.code_page = "GBK";
    }
    return settings;
}

int Run(const std::string& command_line) {
    AsioLoop loop;
    FileSettingsStore store(SettingsPath(std::getenv("WINDIR")));
    const StartSettings settings = ReadFile(store);
    const IconvCodePage code_page(settings.code_page);
    TtyPorts ports(loop, SerialDevicePaths(settings.device_paths));
    AsioDatagramSockets sockets(loop, settings.bind_address);
    AsioTcpClients tcp(loop);
    SqliteLogTable log;
    DiskLineFiles files;
    SystemdController controller(loop, loop);
    StatusFile status(StatusFilePath());
    const char* lock_path = std::getenv("TARNEXCOMM_LOCK");
    FileInstanceLock lock = lock_path ? FileInstanceLock(lock_path) : FileInstanceLock();
    TarnexComm service(
        {.clock = loop,
         .serial_ports = ports,
         .sockets = sockets,
         .tcp = tcp,
         .log_table = log,
         .settings_store = store,
         .files = files,
         .code_page = code_page,
         .controller = controller,
         .instance_lock = lock,
         .view = nullptr,
         .notice = Say,
         .echo = [](const std::string& list, const Text& line) { Print(EchoLine(list, line)); },
         .end_process = [&loop] { loop.Stop(); },
         .status = status.Possible() ? &status : nullptr,
         .process_id = getpid()});
    service.Form_Load(command_line);
    loop.Run();
    return EXIT_SUCCESS;
}

} // namespace
} // namespace tarnex

int main(int argc, char** argv) {
    // Messages that nobody reads and files that may not grow fail to be written; work goes on.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    return tarnex::Run(tarnex::JoinArguments(argc, argv));
}
