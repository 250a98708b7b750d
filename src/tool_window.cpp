#include "tool_window.h"

#include "machine.h"
#include "platform/exit_status.h"
#include "platform/linux/view_loader.h"

#include <csignal>

namespace tarnex {

int RunToolWindow(const char* program, const std::string& advice, const MakeTool& make) {
    Machine machine(program);
    AsioLoop& loop = machine.loop;
    const auto say = [&machine](const std::string& line) { machine.Say(line); };
    ToolForm* shown = nullptr;
    std::string trouble;
    const std::unique_ptr<ScreenView> view = LoadView({.clock = loop,
                                                       .descriptors = loop,
                                                       .notice = say,
                                                       .lost =
                                                           [&] {
                                                               say("the display is gone");
                                                               shown->Abandon();
                                                           }},
                                                      trouble);
    if (!view) {
        say("no window can be shown: " + trouble + advice);
        return kExitUnavailable;
    }
    const std::unique_ptr<ToolForm> tool = make({.clock = loop,
                                                 .serial_ports = machine.ports,
                                                 .files = machine.files,
                                                 .settings_store = machine.store,
                                                 .code_page = machine.code_page,
                                                 .instance_lock = machine.lock,
                                                 .notice = say,
                                                 .end_process = [&loop] { loop.Stop(); }},
                                                *view);
    shown = tool.get();
    for (const int signal : {SIGINT, SIGTERM})
        loop.OnSignal(signal, [&tool] { tool->Form_Unload(); });
    loop.OnSignal(SIGHUP, [&tool] { tool->Abandon(); });
    const std::unique_ptr<FormWindow> window = view->Attach(*tool);
    tool->Form_Load();
    loop.Run();
    return kExitDone;
}

} // namespace tarnex
