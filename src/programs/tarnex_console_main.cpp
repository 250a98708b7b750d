// tarnex-console: the debug console for service staff.

#include "adapters/system/arguments.h"
#include "operator/arguments.h"
#include "programs/tool_window.h"
#include "tools/ocx_debug.h"

#include <iostream>

int main(int argc, char** argv) {
    using namespace tarnex;
    Arguments arguments(
        "tarnex-console",
        "The window for service staff: a button for each command of the unit, a list of\n"
        "received SMS. It needs a display.");
    arguments.Footer(
        "Exit status: 0 done, 64 wrong usage, 66, 74 and 77 the settings file cannot be read\n"
        "(no ordinary file or over 1 MiB, a failure, no rights), 69 no display.");
    if (const auto status = arguments.Read(ProgramArguments(argc, argv), std::cout, std::cerr))
        return *status;
    return RunToolWindow("tarnex-console", "", [](const ToolWorld& world, ScreenView&) {
        return std::make_unique<OCXDebug>(world);
    });
}
