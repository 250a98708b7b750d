#include "tools/tool_form.h"

#include "device/flash_report.h"

namespace tarnex {

namespace {

constexpr TextView kK7100 = u"Tarnex K7100";
constexpr TextView kK7200 = u"Tarnex K7200";

} // namespace

ToolLink::ToolLink(const ToolWorld& world, std::function<void()> lost, DebugDisplay* display)
    : ini(world.settings_store, world.code_page), notices(world.notice), lists(display),
      core({.clock = world.clock,
            .ports = world.serial_ports,
            .code_page = world.code_page,
            .ini = ini,
            .lists = lists,
            .notices = notices,
            .hardware_lost = std::move(lost)}) {}

std::optional<Text> ModelOf(TextView version) {
    if (version.ends_with(u"1.0"))
        return Text(kK7100);
    if (version.ends_with(u"2.0"))
        return Text(kK7200);
    return std::nullopt;
}

Task<> ListIdentity(CommandSet& commands, bool with_signal, std::function<void(const Text&)> add) {
    add(Text(kLogRule));
    const Text first_version = co_await commands.ChkVer();
    if (const std::optional<Text> model = ModelOf(first_version)) {
        add(*model);
        if (*model == kK7200)
            add(Text(kLogRule));
    }
    const Text name = co_await commands.RDName();
    add(u"设备名称    :" + name);
    const Text version = co_await commands.ChkVer();
    add(u"设备版本    :" + version);
    const Text serial = co_await commands.RDSerial();
    add(u"序列号      :" + serial);
    if (with_signal) {
        const Text signal = co_await commands.RDCSQ();
        add(u"网络信号强度:" + signal);
    }
}

ToolForm::ToolForm(std::string name, Text caption, const ToolWorld& world)
    : Form(std::move(name), std::move(caption)), world_(world) {
    OnClose([this] { Form_Unload(); });
}

bool ToolForm::OnlyCopy() {
    const bool only = world_.instance_lock.Acquire();
    if (!only) {
        world_.notice(NoticeLevel::kWarning,
                      "another program of TarnexComm runs on this machine, perhaps the service (" +
                          world_.words.stop_service + ")");
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

std::string ToolForm::BeforeSystemEnd() const {
    return risky_() ? ToUtf8(kSystemEndWarning) : "";
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
