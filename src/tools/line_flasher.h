#pragma once

#include "tools/firmware_update.h"

namespace tarnex {

// Where the line version of the update says what it does: one line each, without line end.
struct FlasherOutput {
    std::function<void(const std::string& line)> say;
    std::function<void(const std::string& line)> complain;
    // Takes the place of the bar before; "" takes it away. Not called without a terminal.
    std::function<void(const std::string& bar)> show_bar;
    bool terminal = false;
};

// A port as the operator names it.
struct UpdatePort {
    int number = 0;   // of the serial ports
    std::string name; // "COM3", or the path of a device
};

// The update of the unit's program for machines without a display. Everything that it returns is
// an exit status.
class LineFlasher : private UpdateObserver {
  public:
    // world.end_process is not called. Everything must outlive the flasher.
    LineFlasher(const ToolWorld& world, FlasherOutput output);

    // Reads the whole file and says what is in it; touches nothing else.
    int Check(const std::string& file);
    // The whole update of the unit on that port; nothing: where it was last found.
    Task<int> Update(std::optional<UpdatePort> port, std::string file);

    // The operator wants the program to end: false when that would leave the unit without a
    // program, which is said; the second call within 5 s is true.
    bool Interrupt();
    // The user's session or the machine is about to end: why that has to wait, which is said; ""
    // when it may end.
    std::string BeforeSystemEnd();
    // Ending now would leave the unit without a program.
    bool MustNotEnd() const { return update_.MustNotEnd(); }

  private:
    int ReadFile(const std::string& path);
    bool FindPort(const std::optional<UpdatePort>& named);
    std::string PortAndDevice() const;
    int ClaimPort();
    Task<bool> UnitAnswers() override;
    void LoaderCalled() override;
    void StepBegan(const Text&) override { ShowProgress(); }
    Task<bool> UnitStarted();
    Task<> ShowNewVersion();
    void Report();
    void ShowProgress();

    const ToolWorld world_;
    const FlasherOutput output_;
    ToolLink link_;
    FirmwareUpdate update_;
    Timer progress_timer_;
    UpdatePort port_;
    Duration began_{};
    FlashStep shown_step_ = FlashStep::kOpenFile;
    int shown_percent_ = 0;
    std::optional<Duration> interrupted_;
};

} // namespace tarnex
