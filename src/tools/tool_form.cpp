#include "tools/tool_form.h"

namespace tarnex {

ToolLink::ToolLink(const ToolWorld& world, std::function<void()> lost, DebugDisplay* display)
    : ini(world.settings_store, world.code_page), notices(world.notice), lists(display),
      core({.clock = world.clock,
            .ports = world.serial_ports,
            .code_page = world.code_page,
            .ini = ini,
            .lists = lists,
            .notices = notices,
            .hardware_lost = std::move(lost)}) {}

ToolForm::ToolForm(std::string name, Text caption, const ToolWorld& world)
    : Form(std::move(name), std::move(caption)), world_(world) {
    OnClose([this] { Form_Unload(); });
}

bool ToolForm::OnlyCopy() {
    const bool only = world_.instance_lock.Acquire();
    if (!only) {
        world_.notice("another program of TarnexComm runs on this machine, perhaps the service "
                      "(systemctl stop tarnexcomm)");
        EndProcess();
    }
    return only;
}

void ToolForm::Start(Task<> procedure) {
    procedure_ = RunToEnd(std::move(procedure));
    procedure_.Start();
}

Task<> ToolForm::RunToEnd(Task<> procedure) {
    co_await std::move(procedure);
    if (abandoned_)
        EndProcess();
}

void ToolForm::AskBeforeEnd(std::function<bool()> risky, std::function<void()> warn) {
    risky_ = std::move(risky);
    warn_ = std::move(warn);
}

void ToolForm::Form_Unload() {
    if (risky_() && !warned_) {
        warned_ = true;
        warn_();
        return;
    }
    SetVisible(false);
    EndProcess();
}

void ToolForm::Abandon() {
    abandoned_ = true;
    if (!Busy() || !risky_())
        EndProcess();
}

void ToolForm::EndProcess() {
    if (ended_)
        return;
    ended_ = true;
    timers_.StopAll();
    // From the loop, since the procedure may stand on the stack now.
    end_ = world_.clock.CallAfter(0ms, [this] {
        Cancel();
        world_.end_process();
    });
}

} // namespace tarnex
