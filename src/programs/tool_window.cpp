#include "programs/tool_window.h"

#include "adapters/system/end_requests.h"
#include "adapters/system/screen_view.h"
#include "platform/exit_status.h"
#include "programs/machine.h"

namespace tarnex {

int RunToolWindow(const char* program, const std::string& advice, const MakeTool& make) {
    Machine machine(program);
    if (const ExitStatus status = machine.TakeSettings(); status != kExitDone)
        return status;
    AsioLoop& loop = machine.loop;
    const auto say = [&machine](const std::string& line) { machine.Say(line); };
    const auto tell = [&say](NoticeLevel, const std::string& line) { say(line); };
    ToolForm* shown = nullptr;
    const auto lost = [&say, &shown](const std::string& why) {
        say(why);
        if (shown)
            shown->Abandon();
    };
    const auto view = MakeView({.loop = loop, .notice = say, .lost = lost});
    if (const std::string trouble = view->Open(); !trouble.empty()) {
        say("no window can be shown: " + trouble + advice);
        return kExitUnavailable;
    }
    const std::unique_ptr<ToolForm> tool = make({.clock = loop,
                                                 .serial_ports = machine.ports,
                                                 .files = machine.files,
                                                 .settings_store = machine.store,
                                                 .code_page = machine.code_page,
                                                 .instance_lock = machine.lock,
                                                 .words = machine.words,
                                                 .notice = tell,
                                                 .end_process = [&loop] { loop.Stop(); }},
                                                *view);
    shown = tool.get();
    EndRequests requests(loop);
    requests.OnEnd([&tool] { tool->Form_Unload(); });
    requests.OnGone([&tool] { tool->Abandon(); });
    requests.BeforeSystemEnd([&tool] { return tool->BeforeSystemEnd(); });
    const std::unique_ptr<FormWindow> window = view->Attach(*tool);
    tool->Form_Load();
    loop.Run();
    return kExitDone;
}

} // namespace tarnex
