// tarnexctl, the operator's command: hands the world to the command line.

#include "adapters/asio/asio_datagram.h"
#include "adapters/asio/asio_version.h"
#include "adapters/asio/first_words.h"
#include "adapters/sqlite/sqlite_history.h"
#include "adapters/sqlite/sqlite_log_files.h"
#include "adapters/system/arguments.h"
#include "adapters/system/environment.h"
#include "adapters/system/file_settings_store.h"
#include "adapters/system/folder_owner.h"
#include "adapters/system/local_time.h"
#include "adapters/system/process.h"
#include "adapters/system/replace_file.h"
#include "adapters/system/request_socket.h"
#include "adapters/system/serial_names.h"
#include "adapters/system/service_restart.h"
#include "adapters/system/status_file.h"
#include "adapters/system/system_code_page.h"
#include "adapters/system/system_machine_look.h"
#include "adapters/system/terminal.h"
#include "adapters/system/this_system.h"
#include "operator/command_line.h"
#include "platform/file_path.h"
#include "settings/load_settings.h"

#include <iostream>

namespace {

// Beside the folder of the program, wherever that was installed.
std::string DataFolder() {
    const std::filesystem::path program = tarnex::ToPath(tarnex::ThisProgram());
    return tarnex::FileIn(tarnex::FromPath(program.parent_path().parent_path()),
                          "share/tarnexcomm");
}

std::unique_ptr<tarnex::CodePage> MakeCodePage(const std::string& name) {
    using tarnex::SystemCodePage;
    return SystemCodePage::Supported(name) ? std::make_unique<SystemCodePage>(name) : nullptr;
}

std::string LockPath(const tarnex::SystemWords& words) {
    const std::string path = tarnex::Environment("TARNEXCOMM_LOCK");
    return path.empty() ? tarnex::FileIn(words.runtime_folder, "lock") : path;
}

tarnex::Result<std::string> GreetingOf(const std::string& host, std::uint16_t port) {
    tarnex::FirstWords words = tarnex::HearFirstWords(host, port, std::chrono::seconds(10));
    if (!words.trouble.empty())
        return tarnex::Trouble{words.trouble};
    return words.heard;
}

// Also where the system takes two ways to write it for one.
bool IsSameFolder(const std::filesystem::path& a, const std::filesystem::path& b) {
    std::error_code missing;
    return a == b || std::filesystem::equivalent(a, b, missing);
}

} // namespace

int main(int argc, char** argv) {
    using namespace tarnex;
    OccupyStandardStreams();
    SystemFileOwners owners;
    SqliteLogFiles logs;
    SystemMachineLook machine;
    const SystemWords words = WordsOfThisSystem();
    OperatorWorld world{
        .out = std::cout,
        .err = std::cerr,
        .words = words,
        .modules = {"tarnexctl " TARNEX_VERSION, "SQLite " + SqliteVersion(),
                    "asio " + AsioVersion()},
        .colours = StandardOutputIsTerminal() && TerminalShowsColours(),
        .progress = StandardErrorIsTerminal(),
        .ask = nullptr,
        .settings_path = SettingsPath(Environment("WINDIR"), words),
        .status_path = StatusFilePath(),
        .lock_path = LockPath(words),
        .history_path = HistoryPath(),
        .data_folder = DataFolder(),
        .serial_paths = SerialDevicePaths({}),
        .owners = owners,
        .logs = logs,
        .machine = machine,
        .open_settings =
            [](const std::string& path) { return std::make_unique<FileSettingsStore>(path); },
        .open_history = OpenSqliteHistory,
        .ask_service =
            [](const std::string& request) { return AskService(RequestSocketPath(), request); },
        .make_code_page = MakeCodePage,
        .replace_file = ReplaceFile,
        .greeting_of = GreetingOf,
        .send_datagram = SendDatagram,
        .now = std::chrono::system_clock::now,
        .local_time = LocalTimeAt,
        .pause = WaitForReader,
        .is_service = [](long process) { return ProcessRuns(process, "tarnexcomm"); }};
    if (StandardInputIsTerminal())
        world.ask = AskOnTerminal;
    const bool installed = IsSameFolder(ToPath(world.settings_path).parent_path(),
                                        ToPath(SettingsPath("", words)).parent_path());
    return RunTarnexctl(ProgramArguments(argc, argv), world,
                        installed ? RestartService : ServiceStart());
}
