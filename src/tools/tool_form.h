#pragma once

#include "device/tarnex_core.h"
#include "platform/service_controller.h"
#include "platform/system_words.h"
#include "ui/form.h"

#include <optional>

namespace tarnex {

// The world that a service tool works in; everything must outlive the tool.
struct ToolWorld {
    Clock& clock;
    SerialPorts& serial_ports;
    LineFiles& files;
    SettingsStore& settings_store;
    const CodePage& code_page;
    InstanceLock& instance_lock;
    const SystemWords& words;
    OperatorNotices::Sink notice;      // for what an operator must act on
    std::function<void()> end_process; // ends the loop; the process exits with status 0
};

// The device link of a service tool, with what it needs around it.
struct ToolLink {
    // lost: the hardware behind the open port went away, outside a search and an update. display:
    // where the link's own lines go while lists.DebugOn is set; nullptr: nowhere.
    ToolLink(const ToolWorld& world, std::function<void()> lost, DebugDisplay* display = nullptr);

    MyIniFile ini;
    OperatorNotices notices;
    DebugLists lists;
    TarnexCore core;
};

// The line between two parts of a tool's log.
inline constexpr TextView kLogRule = u"---------------------------";

// The model that a firmware version ends in; nothing for others.
std::optional<Text> ModelOf(TextView version);

// Reads the unit's identity and adds it line by line: model, name, version, serial number, and
// the signal quality where it is wanted. The commands must outlive the wait.
Task<> ListIdentity(CommandSet& commands, bool with_signal, std::function<void(const Text&)> add);

// The window of a service tool: runs its procedures one at a time, and the program ends with it.
class ToolForm : public Form {
  public:
    virtual ~ToolForm() { world_.clock.Cancel(end_); }

    // Shows the window, or ends the program where another copy of it runs.
    virtual void Form_Load() = 0;
    // Closes the window and ends the program, and with it a command that waits. While the unit's
    // program is incomplete, only a second call does that; the first one is answered by Warn.
    void Form_Unload();
    // Nobody sees the window any more: ends the program, but not before the unit's program is
    // complete or its update has failed.
    void Abandon();
    // The user's session or the machine is about to end: why that has to wait; "" when it may end.
    std::string BeforeSystemEnd() const;

  protected:
    ToolForm(std::string name, Text caption, const ToolWorld& world);
    // False when another copy of the program runs: this one ends then.
    bool OnlyCopy();
    // Runs a procedure that may wait; the one before must be at its end.
    void Start(Task<> procedure);
    bool Busy() const { return procedure_.Running(); }
    // Cancels the procedure. First in the destructor of the class whose parts it uses.
    void Cancel() { procedure_ = Task<>(); }
    // What stands in the way of ending now, and how it is told. Set before the window opens.
    void AskBeforeEnd(std::function<bool()> risky, std::function<void()> warn);

    const ToolWorld world_;
    TimerList timers_;

  private:
    Task<> RunToEnd(Task<> procedure);
    void EndProcess();

    Task<> procedure_;
    std::function<bool()> risky_ = [] { return false; };
    std::function<void()> warn_ = [] {};
    bool warned_ = false;
    bool abandoned_ = false;
    bool ended_ = false;
    CallId end_;
};

} // namespace tarnex
