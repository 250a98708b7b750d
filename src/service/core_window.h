#pragma once

#include "device/tarnex_core.h"
#include "notify/unit_state.h"
#include "ui/form.h"
#include "ui/layout.h"

#include <array>
#include <memory>

namespace tarnex {

// The device link's own window: one button for each of its procedures that staff try out beside
// the running service.
class CoreWindow : public Form {
  public:
    struct Parts {
        TarnexCore& core;
        LineFiles& files;                      // the HEX file of CMDFirmware
        UnitState& unit;                       // taken while a button works on it
        std::function<void()> set_to_research; // the unit has a new program
    };
    // The parts must outlive the window. It has no place on a screen until it is shown.
    explicit CoreWindow(Parts parts);

    // Ends what a button has begun. Not from within it.
    void Cancel() { running_ = Task<>(); }

    static constexpr std::size_t kButtons = 12;
    ListBox Results{*this, "Results"}; // what the procedures have returned

  private:
    struct TestButton {
        const char* name;
        TextView caption; // at first
        bool needs_unit;  // waits for the unit: not while the service does
        Task<Text> (CoreWindow::*run)();
    };
    static const std::array<TestButton, kButtons> kTests;

    void Press(const TestButton& test);
    Task<> Run(const TestButton& test);
    void Enable(bool enabled);
    // Lists why; the outcome in short.
    Text ListFailure(const FlashProgress& progress, int port);

    Task<Text> ToggleCSQ();
    Task<Text> RDNO() { return parts_.core.commands.RDNO(u"1"); }
    Task<Text> RDCSCA() { return parts_.core.commands.RDCSCA(); }
    Task<Text> GetComFifo();
    Task<Text> SendSMS1();
    Task<Text> SendSMS2();
    Task<Text> SMSSendChk();
    Task<Text> Init();
    Task<Text> Reset() { return parts_.core.commands.RESET(); }
    Task<Text> DebugOn();
    Task<Text> DebugOff();
    Task<Text> Firmware();

    Parts parts_;
    std::array<std::unique_ptr<Button>, kButtons> buttons_;
    Task<> running_;
};

// Where its controls stand.
Layout CoreLayout();

} // namespace tarnex
