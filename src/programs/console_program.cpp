// tarnex-console: the debug console for service staff.

#include "platform/exit_status.h"
#include "programs/programs.h"
#include "programs/tool_window.h"
#include "tools/ocx_debug.h"

#include <cstdio>

#include <getopt.h>

namespace tarnex {
namespace {

constexpr char kUsage[] =
    "Usage: tarnex-console\n"
    "The window for service staff: a button for each command of the unit, a list of received\n"
    "SMS. It needs a display.\n"
    "\n"
    "  --help, --version\n"
    "\n"
    "Exit status: 0 done, 64 wrong usage, 66, 74 and 77 the settings file cannot be read (no\n"
    "ordinary file or over 1 MiB, a failure, no rights), 69 no display.\n";

} // namespace

int RunConsoleProgram(int argc, char** argv) {
    const option known[] = {
        {"help", no_argument, nullptr, 'h'}, {"version", no_argument, nullptr, 'v'}, {}};
    for (int letter; (letter = getopt_long(argc, argv, "", known, nullptr)) != -1;) {
        switch (letter) {
        case 'h':
            std::fputs(kUsage, stdout);
            return kExitDone;
        case 'v':
            std::puts("tarnex-console " TARNEX_VERSION);
            return kExitDone;
        default: // getopt_long has said what is wrong
            return kExitUsage;
        }
    }
    if (optind < argc) {
        std::fprintf(stderr, "tarnex-console: unexpected argument \"%s\" (try --help)\n",
                     argv[optind]);
        return kExitUsage;
    }
    return RunToolWindow("tarnex-console", "", [](const ToolWorld& world, ScreenView&) {
        return std::make_unique<OCXDebug>(world);
    });
}

} // namespace tarnex
