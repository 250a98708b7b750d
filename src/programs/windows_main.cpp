// tarnexcomm.exe, which also is tarnex-flasher.exe and tarnex-console.exe, and shows the windows of
// all three.

#include "adapters/system/arguments.h"
#include "adapters/system/process.h"
#include "adapters/system/terminal.h"
#include "adapters/win32/win32_view.h"
#include "adapters/windows/view_pipe.h"
#include "adapters/windows/windows_text.h"
#include "platform/exit_status.h"
#include "platform/file_path.h"
#include "platform/text.h"
#include "programs/form_layouts.h"

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

// The entry of each program, in its own file; it is called main() there.
int tarnexcomm_main(int argc, char** argv);
int tarnex_flasher_main(int argc, char** argv);
int tarnex_console_main(int argc, char** argv);

namespace tarnex {
namespace {

struct NamedProgram {
    TextView name;
    int (*entry)(int argc, char** argv);
};
constexpr NamedProgram kPrograms[] = {
    {u"tarnex-flasher", tarnex_flasher_main},
    {u"tarnex-console", tarnex_console_main},
};

// The entry of the tool of that name; nullptr: this is the service, under whatever name.
auto ToolByName() {
    const Text name = FromUtf8(FromPath(ToPath(ThisProgram()).stem()));
    for (const NamedProgram& program : kPrograms)
        if (EqualIgnoringCase(name, program.name))
            return program.entry;
    return static_cast<decltype(NamedProgram::entry)>(nullptr);
}

// Runs a tool. When it was started from a desktop it has no standard error: what it says there is
// shown in the end.
int RunTool(decltype(NamedProgram::entry) entry, int argc, char** argv) {
    if (GetFileType(GetStdHandle(STD_ERROR_HANDLE)) != FILE_TYPE_UNKNOWN)
        return entry(argc, argv);
    std::error_code failed;
    const auto file = std::filesystem::temp_directory_path(failed) /
                      ToPath("tarnex-" + std::to_string(ThisProcess()) + ".txt");
    std::FILE* const said = _wfreopen(file.c_str(), L"wb", stderr);
    const int status = entry(argc, argv);
    if (!said)
        return status;
    std::fclose(stderr);
    std::ostringstream words;
    words << std::ifstream(file, std::ios::binary).rdbuf();
    std::filesystem::remove(file, failed);
    if (!words.view().empty())
        MessageBoxW(nullptr, ToWide(words.view()).c_str(), L"TarnexComm",
                    MB_OK | MB_ICONINFORMATION | MB_SETFOREGROUND);
    return status;
}

// An end of a pipe that has been handed down to this process.
HANDLE PipeOf(const std::string& number) {
    std::uintptr_t value = 0;
    std::from_chars(number.data(), number.data() + number.size(), value);
    // A number that the system hands back. NOLINTNEXTLINE(performance-no-int-to-ptr)
    const HANDLE handle = reinterpret_cast<HANDLE>(value);
    return GetFileType(handle) == FILE_TYPE_PIPE ? handle : INVALID_HANDLE_VALUE;
}

// arguments: behind the one that asks for it.
int ShowWindows(const std::string& version, const std::string& number) {
    WindowsHandle handle(PipeOf(number));
    if (!handle) {
        std::fputs("tarnexcomm: this program starts itself so for its windows; nobody else does\n",
                   stderr);
        return kExitUsage;
    }
    ViewPipe pipe(std::move(handle));
    if (version != TARNEX_VERSION) {
        WireWriter trouble(ViewRecord::kTrouble);
        trouble.String("the program has been replaced by another version meanwhile; start it anew");
        pipe.Send(trouble.Bytes());
        return kExitUnavailable;
    }
    Win32View(pipe, LayoutOf).Run();
    return kExitDone;
}

} // namespace
} // namespace tarnex

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = tarnex::ProgramArguments(argc, argv);
    if (arguments.size() == 3 && arguments[0] == tarnex::kShowWindows)
        return tarnex::ShowWindows(arguments[1], arguments[2]);
    tarnex::OccupyStandardStreams();
    if (const auto tool = tarnex::ToolByName())
        return tarnex::RunTool(tool, argc, argv);
    return tarnexcomm_main(argc, argv);
}
